#include "platform/OwnProgram.h"

#include "platform/posix/ExecutablePath.h"

namespace installer {

std::optional<std::string> ownProgram() {
  return resolved("/proc/self/exe");
}

}  // namespace installer
