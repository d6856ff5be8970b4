// A shared library to be preloaded: from the start of main on it counts the allocations of the
// process and lets some of them fail. Told by variables that only this process sees; its children
// run as always.
//
//   HOTFIX_FAIL_ALLOCATION=<n>     the n-th allocation fails (1 is the first), the others do not
//   HOTFIX_FAIL_ALLOCATION=<n>+    the n-th fails and all that follow
//   HOTFIX_COUNT_ALLOCATIONS=<file>  receives their number at the end of the process
//   HOTFIX_ALLOCATION_PLACE=<file>   receives where the n-th was asked for: a frame a line, the
//                                    innermost first; left alone when there were fewer
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

// The C library's own, under the names that stay when its others are replaced.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

using Main = int (*)(int, char**, char**);
using StartMain = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);

Main theMain = nullptr;
bool isCounting = false;
unsigned long counted = 0;
unsigned long failing = 0;  // 0: none
bool failsOn = false;       // whether all behind that one fail too
char report[4096];
char place[4096];

void writePlace() {
  isCounting = false;
  void* frames[40];
  const int file = open(place, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  backtrace_symbols_fd(frames, backtrace(frames, sizeof frames / sizeof *frames), file);
  close(file);
  isCounting = true;
}

bool fails() {
  if (!isCounting) return false;
  ++counted;
  const bool hit = failing != 0 && (counted == failing || (failsOn && counted > failing));
  if (!hit) return false;
  if (counted == failing && place[0] != '\0') writePlace();
  errno = ENOMEM;
  return true;
}

void writeReport() {
  isCounting = false;
  const int file = open(report, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  char text[32];
  const int length = std::snprintf(text, sizeof text, "%lu\n", counted);
  (void)!write(file, text, static_cast<std::size_t>(length));  // whoever asked sees that it lacks
  close(file);
}

void readOrders() {
  if (const char* order = std::getenv("HOTFIX_FAIL_ALLOCATION")) {
    failing = std::strtoul(order, nullptr, 10);
    failsOn = std::strchr(order, '+') != nullptr;
  }
  if (const char* file = std::getenv("HOTFIX_COUNT_ALLOCATIONS"))
    std::snprintf(report, sizeof report, "%s", file);
  if (const char* file = std::getenv("HOTFIX_ALLOCATION_PLACE"))
    std::snprintf(place, sizeof place, "%s", file);
  for (const char* variable : {"LD_PRELOAD", "HOTFIX_FAIL_ALLOCATION", "HOTFIX_COUNT_ALLOCATIONS",
                               "HOTFIX_ALLOCATION_PLACE"})
    unsetenv(variable);
}

int countedMain(int count, char** arguments, char** environment) {
  readOrders();
  void* frame = nullptr;
  if (place[0] != '\0') (void)backtrace(&frame, 1);  // the first one allocates
  isCounting = true;
  const int status = theMain(count, arguments, environment);
  if (report[0] != '\0') writeReport();
  isCounting = false;
  return status;
}

}  // namespace

extern "C" {

int __libc_start_main(Main main, int count, char** arguments, void (*init)(), void (*fini)(),
                      void (*end)(), void* stack) {
  theMain = main;
  const auto start = reinterpret_cast<StartMain>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(countedMain, count, arguments, init, fini, end, stack);
}

void* malloc(std::size_t size) {
  return fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
  return fails() ? nullptr : __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return fails() ? nullptr : __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  if (fails()) return ENOMEM;
  *block = __libc_memalign(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"
