#include "support/RecordedChildren.h"

#include <gtest/gtest.h>

#include <ostream>

namespace installer::test {
namespace {

constexpr int kFirstChild = 1000;

}  // namespace

std::optional<int> RecordedChildren::start(const Command& command, std::string* reason) {
  _started.push_back(command);
  if (_missing.contains(command.executable)) {
    if (reason != nullptr) *reason = "No such file or directory";
    return std::nullopt;
  }
  const int child = kFirstChild + static_cast<int>(_started.size());
  _running[child] = command.executable;
  if (_script) _script(command);
  return child;
}

std::optional<std::string> RecordedChildren::wait(int child) {
  EXPECT_TRUE(_running.contains(child)) << "waited for a child that does not run: " << child;
  const auto found = _signals.find(_running[child]);
  _running.erase(child);
  return found != _signals.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<std::string> RecordedChildren::firstLine(const Command& command) {
  _asked.push_back(command);
  const auto found = _lines.find(command.executable);
  return found != _lines.end() ? std::optional(found->second) : std::nullopt;
}

int RecordedChildren::shell(const std::string& commandLine) {
  _shellLines.push_back(commandLine);
  return _shellStatus;
}

void PrintTo(const Command& command, std::ostream* stream) {
  *stream << ::testing::PrintToString(command.executable) << ' '
          << ::testing::PrintToString(command.arguments);
}

}  // namespace installer::test
