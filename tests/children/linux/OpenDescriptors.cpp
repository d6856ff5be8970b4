#include "children/OpenDescriptors.h"

#include <dirent.h>
#include <unistd.h>

#include <cstdlib>

std::map<int, std::string> openDescriptors() {
  std::map<int, std::string> open;
  DIR* const folder = opendir("/proc/self/fd");
  if (folder == nullptr) return open;
  while (const dirent* const entry = readdir(folder)) {
    const int number = std::atoi(entry->d_name);
    if (entry->d_name[0] == '.' || number == dirfd(folder)) continue;
    char target[4096];
    const ssize_t length = readlinkat(dirfd(folder), entry->d_name, target, sizeof target);
    if (length >= 0) open[number] = std::string(target, static_cast<std::size_t>(length));
  }
  closedir(folder);
  return open;
}
