#include "platform/files/RenameInSteps.h"

#include <stdio.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files/Opening.h"

namespace installer {

namespace {

int renameWhereNothingIs(int fromFolder, const char* from, int toFolder, const char* to) {
  if (!statusOf(toFolder, to)) return ::renameat(fromFolder, from, toFolder, to);
  errno = EEXIST;
  return -1;
}

// exFAT answers ENOTSUP, FAT on Linux EPERM.
bool hasNoSecondNames(int error) {
  return error == ENOTSUP || error == EOPNOTSUPP || error == EPERM;
}

}  // namespace

int renameInSteps(int fromFolder, const char* from, int toFolder, const char* to) {
  if (isFolder(fromFolder, from)) return renameWhereNothingIs(fromFolder, from, toFolder, to);
  if (::linkat(fromFolder, from, toFolder, to, 0) == 0) return ::unlinkat(fromFolder, from, 0);
  if (!hasNoSecondNames(errno)) return -1;
  return renameWhereNothingIs(fromFolder, from, toFolder, to);
}

}  // namespace installer
