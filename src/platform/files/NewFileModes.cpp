#include "platform/files/NewFileModes.h"

#include "platform/files/Opening.h"

namespace installer {

namespace {

constexpr mode_t kModeBits = 07777;

}  // namespace

bool NewFileModes::isExact(const Descriptor& file, mode_t mode, std::optional<struct stat> seen) {
  if (_isOwn || (mode & _taken) != 0) return false;
  if ((mode & ~_granted) == 0) return _granted != 0;
  if (!seen) seen = statusOf(file);
  if (!seen) return false;
  const mode_t got = seen->st_mode & kModeBits;
  _isOwn = (got & ~mode) != 0;
  _taken |= mode & ~got;
  _granted |= got;
  return got == mode;
}

}  // namespace installer
