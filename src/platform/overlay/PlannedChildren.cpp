#include "platform/overlay/PlannedChildren.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "platform/files/Failure.h"
#include "platform/files/FileSystemCalls.h"

namespace installer::overlay {

namespace {

constexpr mode_t kExecutable = 0111;
constexpr std::size_t kBeginning = 256;  // bytes, as many as systems look at
constexpr int kMaximumScripts = 4;       // that are each other's interpreters
constexpr const char* kUnasked = "{first line of ";

// Of a script the program that it wants; empty when it names none.
std::string interpreterIn(std::string_view script) {
  constexpr std::string_view kMark = "#!";
  if (!script.starts_with(kMark)) return {};
  script.remove_prefix(kMark.size());
  script.remove_prefix(std::min(script.find_first_not_of(" \t"), script.size()));
  return std::string(script.substr(0, script.find_first_of(" \t\n")));
}

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
  return executable.starts_with(kUnasked) ? 0 : refusalOf(executable, 0);
}

// One that only others may read counts as a program: the place is among what is unknown.
int PlannedChildren::refusalOf(const std::string& program, int scripts) {
  if (scripts > kMaximumScripts) return ELOOP;
  const Found found = _files.found(program);
  if (!found.node) return found.error;
  const bool isExecutable = found.node->isFile() && (found.node->now.mode & kExecutable) != 0;
  if (!isExecutable) return EACCES;
  const auto bytes = _files.tree().beginning(*found.node, kBeginning);
  if (!bytes || syscalls::isProgram(*bytes)) return 0;
  const std::string interpreter = interpreterIn(*bytes);
  return interpreter.empty() ? ENOEXEC : refusalOf(interpreter, scripts + 1);
}

}  // namespace installer::overlay
