#include "util/HandedOver.h"

namespace installer {

FileAttributes handedTo(const std::optional<std::string>& owner, mode_t mode) {
  return {.owner = owner.value_or(""), .group = "admin", .mode = mode};
}

}  // namespace installer
