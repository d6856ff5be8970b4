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

void runChild(const Command& command) {
  if (const std::optional<int> child = startChild(command))
    Platform::current().children->wait(*child);
}

}  // namespace installer
