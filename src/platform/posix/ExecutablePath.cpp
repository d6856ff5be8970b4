#include "platform/posix/ExecutablePath.h"

#include <cstdlib>
#include <memory>

namespace installer {

std::string fileNameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string resolvedOrSame(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
  return resolved ? resolved.get() : path;
}

}  // namespace installer
