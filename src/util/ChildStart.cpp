#include "util/ChildStart.h"

#include <string>

#include "platform/Log.h"

namespace installer {

std::optional<int> startChild(const Command& command) {
  std::string reason;
  const std::optional<int> child = Platform::current().children->start(command, &reason);
  if (!child) log(LogLevel::error, "Not able to start {}: {}.", command.executable, reason);
  return child;
}

std::optional<std::string> runChild(const Command& command) {
  const std::optional<int> child = startChild(command);
  return child ? Platform::current().children->wait(*child) : std::nullopt;
}

}  // namespace installer
