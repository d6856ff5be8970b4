#include "platform/posix/ExecutablePath.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "platform/posix/Memory.h"

namespace installer {

std::string fileNameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::optional<std::string> resolved(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> found(realpath(path.c_str(), nullptr), std::free);
  if (!found) checkMemory(errno);
  if (!found) return std::nullopt;
  return std::string(found.get());
}

}  // namespace installer
