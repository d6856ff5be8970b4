#include "platform/JavaRuntime.h"

namespace installer {

std::optional<std::string> hostJavaHome() {
  return std::nullopt;
}

}  // namespace installer
