#include "platform/overlay/PlannedChildren.h"

#include <cerrno>

#include "platform/files/Failure.h"

namespace installer::overlay {

namespace {

constexpr mode_t kExecutable = 0111;
constexpr const char* kUnasked = "{first line of ";

}  // namespace

std::optional<int> PlannedChildren::start(const Command& command, std::string* reason) {
  const int error = refusalOf(command.executable);
  const std::string refusal = error == 0 ? std::string() : reasonOf(error);
  _planned.push_back({command, refusal});
  if (error == 0) {
    if (_play) _play(command);
    return static_cast<int>(_planned.size());
  }
  if (reason != nullptr) *reason = refusal;
  return std::nullopt;
}

std::optional<std::string> PlannedChildren::wait(int) {
  return std::nullopt;
}

std::optional<std::string> PlannedChildren::firstLine(const Command& command) {
  const int error = refusalOf(command.executable);
  if (error != 0) return std::nullopt;
  _planned.push_back({command, {}, true});
  return kUnasked + command.executable + "}";
}

int PlannedChildren::shell(const std::string& commandLine) {
  _planned.push_back({{"/bin/sh", {"-c", "--", commandLine}}, {}});
  return 0;
}

// What lies below an unasked place is taken to be there.
int PlannedChildren::refusalOf(const std::string& executable) {
  if (executable.starts_with(kUnasked)) return 0;
  const Found found = _files.found(executable);
  if (!found.node) return found.error;
  const bool isExecutable = found.node->isFile() && (found.node->now.mode & kExecutable) != 0;
  return isExecutable ? 0 : EACCES;
}

}  // namespace installer::overlay
