#include "Fuzzed.h"

#include <dlfcn.h>
#include <time.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "base/XmlLibrary.h"

namespace installer::fuzz {

namespace {

// Memory is measured by a sanitizer's hooks and not at all without one. They are looked up: not
// every compiler with sanitizers brings the header that declares them, and not every linker leaves
// open what no library has.
using InstallHooks = int(void (*onMalloc)(const volatile void*, std::size_t),
                         void (*onFree)(const volatile void*));
using AllocatedSize = std::size_t(const volatile void* memory);

template <class Function>
Function* sanitizers(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

AllocatedSize* const allocatedSize = sanitizers<AllocatedSize>("__sanitizer_get_allocated_size");

// What an input may take: a multiple of its size, and what everything takes whatever its size. An
// entry of a few bytes is a few words in memory, and fuzzers hold what they read twice to compare
// it: of the densest inputs 64 bytes for each of theirs were seen. Time is promised to be at most
// 0.05 seconds for each megabyte; sanitizers, all that is compared and a busy machine make it this
// much more, and what is quadratic takes still longer.
struct Allowance {
  std::size_t first = std::size_t{1} << 20;
  std::size_t forEach = 80;  // bytes
};
constexpr double kSecondsForEach = 0.05 / (1 << 20);
constexpr double kSlowdown = 100;
constexpr double kFirstSeconds = 0.25;
// Looking at the clock takes longer than a short input.
constexpr std::size_t kTimedFrom = 4096;

Allowance allowed;
bool isWatched = false;
std::ptrdiff_t takenNow = 0;  // bytes, since the input began
std::ptrdiff_t takenMost = 0;

void onMalloc(const volatile void* /*memory*/, std::size_t size) {
  if (!isWatched) return;
  takenNow += static_cast<std::ptrdiff_t>(size);
  takenMost = std::max(takenMost, takenNow);
}

void onFree(const volatile void* memory) {
  if (!isWatched || memory == nullptr) return;
  takenNow -= static_cast<std::ptrdiff_t>(allocatedSize(memory));
}

double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void tryWatched(std::string_view input) {
  const bool isTimed = input.size() >= kTimedFrom;
  const double begin = isTimed ? processorTime() : 0;
  takenNow = takenMost = 0;
  isWatched = true;
  tryInput(input);
  isWatched = false;
  const auto bytes = static_cast<std::size_t>(takenMost);
  const bool isEnough = bytes <= allowed.first + allowed.forEach * input.size();
  if (!isEnough) std::fprintf(stderr, "%zu bytes of memory for %zu bytes\n", bytes, input.size());
  require(isEnough, "memory grows with the input");
  if (!isTimed) return;
  const double taken = processorTime() - begin;
  const double most =
      kFirstSeconds + kSlowdown * kSecondsForEach * static_cast<double>(input.size());
  if (taken > most) std::fprintf(stderr, "%.3f seconds for %zu bytes\n", taken, input.size());
  require(taken <= most, "time grows with the input");
}

}  // namespace

void allowMemory(std::size_t first, std::size_t forEach) {
  allowed = {first, forEach};
}

void leaveMemoryUnwatched() {
  isWatched = false;
}

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "what does not hold: %s\n", what);
  std::abort();
}

std::string Lines::next() {
  const std::size_t end = std::min(_rest.find('\n'), _rest.size());
  std::string line(_rest.substr(0, end));
  _rest.remove_prefix(std::min(end + 1, _rest.size()));
  return line;
}

}  // namespace installer::fuzz

// Where memory came from would take longer to note than most inputs take; ASAN_OPTIONS with
// malloc_context_size=30 tells it for one. What has been freed is watched for a while only.
extern "C" const char* __asan_default_options() {
  return "malloc_context_size=0:quarantine_size_mb=16:detect_stack_use_after_return=1";
}

// The XML library is loaded first: it is not the inputs' memory, and where their root is another
// one it could not be found.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  (void)installer::xml::library();  // only that it was asked counts
  using namespace installer::fuzz;
  const auto installHooks = sanitizers<InstallHooks>("__sanitizer_install_malloc_and_free_hooks");
  const bool isSanitized = sanitizers<void()>("__asan_init") != nullptr;
  const bool hasHooks = installHooks != nullptr && allocatedSize != nullptr;
  require(hasHooks || !isSanitized, "memory is measured");
  if (hasHooks) installHooks(onMalloc, onFree);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  installer::fuzz::tryWatched({reinterpret_cast<const char*>(data), size});
  return 0;
}
