#include "children/OpenDescriptors.h"

#include <fcntl.h>
#include <sys/param.h>
#include <unistd.h>

namespace {

// The path of the file; empty for what has none, such as a pipe.
std::string targetOf(int descriptor) {
  char path[MAXPATHLEN] = {};
  return fcntl(descriptor, F_GETPATH, path) == 0 ? path : "";
}

}  // namespace

std::map<int, std::string> openDescriptors() {
  std::map<int, std::string> open;
  for (int descriptor = 0; descriptor < getdtablesize(); ++descriptor)
    if (fcntl(descriptor, F_GETFD) >= 0) open[descriptor] = targetOf(descriptor);
  return open;
}
