#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/ChildProcesses.h"

namespace installer {

// How a child ended: by itself with a status, or by a signal ("signal 9 (Killed)"). The
// system may tell neither.
struct WatchedEnd {
  std::optional<int> status;
  std::optional<std::string> signal;

  friend bool operator==(const WatchedEnd&, const WatchedEnd&) = default;
};

// A child that runs while its parent does something else. Signals that ask this process to end are
// passed on to it (Interruption.h). Its end is waited for when the object goes.
class WatchedChild {
 public:
  WatchedChild() = default;
  WatchedChild(const WatchedChild&) = delete;
  WatchedChild& operator=(const WatchedChild&) = delete;
  virtual ~WatchedChild() = default;

  virtual long process() const = 0;
  // nullopt while it runs.
  [[nodiscard]] virtual std::optional<WatchedEnd> end() = 0;

  // Asks it to end, as a system that shuts down does. Nothing happens once its end is known.
  virtual void ask() = 0;
  // Ends it without asking.
  virtual void kill() = 0;
};

// Why a child was not started: its output's file could not be made, or the program not be run.
struct StartLack {
  bool isOutput = false;
  std::string reason;  // the system's words
};

// Starts the command as ChildProcesses does, but one of the signals that ask to end stays ignored
// when it is ignored here, and standard output and error go to the file `output`, which is made
// with mode 0600 and must not be there yet. The file is locked for as long as the child, or who got
// its output, has it. Null, with `lack` set, when nothing was started; the file may be there then.
[[nodiscard]] std::unique_ptr<WatchedChild> startWatched(const Command& command,
                                                         const std::string& output,
                                                         StartLack& lack);

// Whether a child of startWatched(), be it of a parent that is gone, still has this output. False
// for what is no regular file.
[[nodiscard]] bool isOutputHeld(const std::string& output);

}  // namespace installer
