// Preloaded into the program: counts its allocations from main() on, and lets one of them fail. The
// program's children know nothing of it.
//
// HOTFIX_FAIL_ALLOCATION is the number of the allocation that fails, 0 for none. Into the file that
// HOTFIX_ALLOCATION_REPORT names goes where that allocation was asked for, one frame a line;
// without a failing one, how many there were.

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

using Main = int (*)(int, char**, char**);

constexpr int kFrames = 40;

Main programsMain = nullptr;
bool counting = false;
long count = 0;
long failing = 0;
char report[256];

void tellPlace() {
  void* frames[kFrames];
  const int file = open(report, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  backtrace_symbols_fd(frames, backtrace(frames, kFrames), file);
  close(file);
}

// Whether this allocation is the one that fails.
bool fails() {
  if (!counting || ++count != failing) return false;
  counting = false;
  tellPlace();
  errno = ENOMEM;
  return true;
}

// What the variables say, which are gone from then on.
void readEnvironment() {
  const char* const number = std::getenv("HOTFIX_FAIL_ALLOCATION");
  const char* const file = std::getenv("HOTFIX_ALLOCATION_REPORT");
  failing = number == nullptr ? 0 : std::atol(number);
  std::snprintf(report, sizeof report, "%s", file == nullptr ? "/dev/null" : file);
  for (const char* variable : {"HOTFIX_FAIL_ALLOCATION", "HOTFIX_ALLOCATION_REPORT", "LD_PRELOAD"})
    unsetenv(variable);
}

int countedMain(int argc, char** argv, char** environment) {
  void* frame = nullptr;
  (void)backtrace(&frame, 1);  // the first one allocates
  readEnvironment();
  counting = true;
  const int status = programsMain(argc, argv, environment);
  counting = false;
  return status;
}

void tellCount() {
  if (failing != 0) return;
  const int file = open(report, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  dprintf(file, "%ld\n", count);
  close(file);
}

const struct AtEnd {
  ~AtEnd() { tellCount(); }
} atEnd;

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  return fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) {
  return fails() ? nullptr : __libc_calloc(number, size);
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

int __libc_start_main(Main main, int argc, char** argv, void (*initialise)(), void (*finish)(),
                      void (*finishLoader)(), void* stackEnd) {
  using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
  const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
  programsMain = main;
  return start(countedMain, argc, argv, initialise, finish, finishLoader, stackEnd);
}
}
