#include "libproc.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "mach-o/dyld.h"
#include "sys/sysctl.h"

namespace {

// macOS leaves room for as many that may have started meanwhile.
constexpr int kSpare = 20;

std::string placeOf(int process) {
  return "/proc/" + std::to_string(process);
}

std::string argumentsOf(int process) {
  std::ifstream file(placeOf(process) + "/cmdline", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int proc_listallpids(void* buffer, int size) {
  const std::unique_ptr<DIR, int (*)(DIR*)> table(opendir("/proc"), closedir);
  if (!table) return -1;
  int count = 0;
  while (const dirent* entry = readdir(table.get())) {
    const int process = std::atoi(entry->d_name);
    if (process <= 0) continue;
    if (buffer != nullptr) {
      if (count >= size / static_cast<int>(sizeof(int))) break;
      static_cast<int*>(buffer)[count] = process;
    }
    ++count;
  }
  return buffer != nullptr ? count : count + kSpare;
}

int proc_pidpath(int process, void* buffer, uint32_t size) {
  const ssize_t length =
      readlink((placeOf(process) + "/exe").c_str(), static_cast<char*>(buffer), size);
  return length > 0 ? static_cast<int>(length) : 0;
}

int proc_pidinfo(int process, int flavor, uint64_t /*argument*/, void* buffer, int size) {
  struct stat status {};
  if (flavor != PROC_PIDT_SHORTBSDINFO || stat(placeOf(process).c_str(), &status) != 0) return 0;
  static_cast<proc_bsdshortinfo*>(buffer)->pbsi_uid = status.st_uid;
  return size;
}

// The number of arguments, the path, zero bytes up to the next word, and the arguments.
int sysctl(int* name, u_int length, void* old, size_t* oldSize, void* /*value*/, size_t /*size*/) {
  if (length != 3 || name[0] != CTL_KERN || name[1] != KERN_PROCARGS2) return errno = EINVAL, -1;
  const std::string arguments = argumentsOf(name[2]);
  char path[PROC_PIDPATHINFO_MAXSIZE];
  const int pathLength = proc_pidpath(name[2], path, sizeof path);
  if (arguments.empty() || pathLength == 0) return errno = EINVAL, -1;
  const auto count = static_cast<int>(std::count(arguments.begin(), arguments.end(), '\0'));
  std::string start(reinterpret_cast<const char*>(&count), sizeof count);
  start.append(path, static_cast<size_t>(pathLength));
  start.append(sizeof(void*) - start.size() % sizeof(void*), '\0');
  start += arguments;
  *oldSize = std::min(*oldSize, start.size());
  std::memcpy(old, start.data(), *oldSize);
  return 0;
}

int _NSGetExecutablePath(char* buffer, uint32_t* size) {
  const int length = proc_pidpath(getpid(), buffer, *size - 1);
  if (length == 0) return -1;
  buffer[length] = '\0';
  return 0;
}
