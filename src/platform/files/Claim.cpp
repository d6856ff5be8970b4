#include "platform/files/Claim.h"

#include <sys/file.h>

#include <cerrno>

#include "platform/files/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

bool claim(const Descriptor& item, std::optional<struct stat>* seen) {
  if (!claimLeftOver(item)) return errno != EWOULDBLOCK;
  const auto status = statusOf(item);
  if (seen != nullptr) *seen = status;
  return !status || status->st_nlink > 0;
}

bool claimLeftOver(const Descriptor& item) {
  return uninterrupted([&] { return ::flock(item.get(), LOCK_EX | LOCK_NB); }) == 0;
}

}  // namespace installer
