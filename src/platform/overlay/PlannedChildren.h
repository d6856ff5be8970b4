#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ChildProcesses.h"
#include "platform/overlay/OverlayFileManager.h"

namespace installer::overlay {

// A child as it would be started.
struct PlannedChild {
  Command command;
  std::string refusal;      // why the system would not start it; empty when it would
  bool isQuestion = false;  // whose first line of output is wanted
};

// Children that are noted and not started. One whose program is missing, may not be executed,
// begins as no program does or wants an interpreter that cannot be run is not started here either.
// That it breaks off behind its beginning, or that its file system runs no programs, is not
// foreseen.
class PlannedChildren : public ChildProcesses {
 public:
  explicit PlannedChildren(OverlayFileManager& files) : _files(files) {}

  // What a child would do, called when it would be started.
  void onStart(std::function<void(const Command&)> play) { _play = std::move(play); }
  const std::vector<PlannedChild>& planned() const { return _planned; }

  std::optional<int> start(const Command& command, std::string* reason) override;
  std::optional<std::string> wait(int child) override;
  // A line that stands for what nobody has asked for: "{first line of <executable>}".
  std::optional<std::string> firstLine(const Command& command) override;
  int shell(const std::string& commandLine) override;

 private:
  // 0, or the system's error number.
  int refusalOf(const std::string& executable);
  // The same of a program, or of the interpreter of so many scripts.
  int refusalOf(const std::string& program, int scripts);

  OverlayFileManager& _files;
  std::function<void(const Command&)> _play;
  std::vector<PlannedChild> _planned;
};

}  // namespace installer::overlay
