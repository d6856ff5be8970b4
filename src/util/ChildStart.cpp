#include "util/ChildStart.h"

#include <new>
#include <string>

#include "platform/Interruption.h"
#include "platform/Log.h"

namespace installer {

std::optional<int> startChild(const Command& command) {
  checkInterruption();
  std::string reason;
  const std::optional<int> child = Platform::current().children->start(command, &reason);
  if (!child) log(LogLevel::error, "Not able to start {}: {}.", command.executable, reason);
  return child;
}

ChildEnd::~ChildEnd() {
  try {
    (void)Platform::current().children->wait(_child);  // see the declaration
  } catch (const std::bad_alloc&) {
    // It has ended by then; there was no memory to say how.
  }
}

std::optional<std::string> runChild(const Command& command) {
  const std::optional<int> child = startChild(command);
  return child ? Platform::current().children->wait(*child) : std::nullopt;
}

}  // namespace installer
