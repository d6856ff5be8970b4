#include "support/FolderHolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <stdexcept>

namespace installer::test {

FolderHolder::FolderHolder(const std::string& folder)
    : _descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (_descriptor < 0) throw std::runtime_error("cannot open " + folder);
  if (flock(_descriptor, LOCK_EX | LOCK_NB) != 0) letGo();
}

void FolderHolder::letGo() {
  if (_descriptor >= 0) close(_descriptor);
  _descriptor = -1;
}

bool isLocked(const std::string& folder) {
  return !FolderHolder(folder).holds();
}

}  // namespace installer::test
