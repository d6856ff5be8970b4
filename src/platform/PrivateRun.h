#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/overlay/Changes.h"

// A run that sees the machine, and changes nothing of it.
namespace installer::privately {

// Why there are no such runs: a sentence without its full stop. nullopt when this system has them.
std::optional<std::string> lack();

// A new folder that nobody else may enter, in `folder`; nullopt with `reason` set.
[[nodiscard]] std::optional<std::string> makeWorkFolder(const std::string& folder,
                                                        std::string& reason);
// With all that is below it, and whatever signals have come. False when something is left.
[[nodiscard]] bool removeWorkFolder(const std::string& folder);

// By which an entry is known again, unless it has changed.
struct Stamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t seconds = 0;  // of its last change, owner and mode included
  std::int64_t nanoseconds = 0;
  friend bool operator==(const Stamp&, const Stamp&) = default;
};
// What has been copied, by path below the folder.
using Copied = std::unordered_map<std::string, Stamp>;

// Copies a folder whole: owners, modes, times, links, pipes, files with several names; blocks are
// shared with the original where the file system can. nullopt with `reason` set. What cannot be
// given to its owner is this process's. Throws Interrupted between entries.
[[nodiscard]] std::optional<Copied> copyTree(const std::string& from, const std::string& to,
                                             std::string& reason);
// Whether nothing has changed at the path in the folder since it was copied.
[[nodiscard]] bool isAsCopied(const Copied& copied, const std::string& folder,
                              const std::string& path);

// What the path of an existing file or folder leads to, links followed; the path itself where that
// cannot be told.
std::string resolved(const std::string& path);

// How a run sees the machine.
struct View {
  std::string work;  // a work folder: where the view is put together
  // Folder -> whose content is seen in its place, and can be changed there. The places exist.
  std::vector<std::pair<std::string, std::string>> replaced;
  std::string temporary;            // the folder that is /tmp
  std::vector<std::string> needed;  // what is seen as it is although it lies in /tmp
  std::string output;               // the file that receives standard output and error
};

struct End {
  int status = 0;
  std::optional<std::string> signal;  // that ended it instead: "signal 9 (Killed)"
};

// Does the work in a process of its own, and waits for its end and that of all its children. It
// sees the view, and no other process but the one that keeps it; everything but what the view names
// can only be read, nobody listens to what it tells the system log, unless this process has opened
// that already. Signals that ask this process to end are passed on to it. nullopt, with `reason`
// set, when that cannot be had; the work is not begun then.
[[nodiscard]] std::optional<End> run(const View& view, const std::function<int()>& work,
                                     std::string& reason);

// How one entry differs. Paths are relative to the folders.
struct Difference {
  std::string path;
  overlay::Change::Kind kind = overlay::Change::Kind::created;
  std::optional<overlay::Status> before;  // absent for what is created
  std::optional<overlay::Status> after;   // absent for what is removed
};

// Everything in which two folders differ, by path. nullopt, with `reason` set, when one cannot be
// read. Throws Interrupted between entries.
[[nodiscard]] std::optional<std::vector<Difference>> differences(const std::string& before,
                                                                 const std::string& after,
                                                                 std::string& reason);

}  // namespace installer::privately
