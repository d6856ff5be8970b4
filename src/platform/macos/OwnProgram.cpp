#include "platform/OwnProgram.h"

#include <mach-o/dyld.h>

#include <cstdint>

#include "platform/posix/ExecutablePath.h"

namespace installer {

std::optional<std::string> ownProgram() {
  std::uint32_t size = 0;
  (void)_NSGetExecutablePath(nullptr, &size);  // only tells the size
  std::string path(size, '\0');
  if (_NSGetExecutablePath(path.data(), &size) != 0) return std::nullopt;
  return resolved(path.c_str());
}

}  // namespace installer
