#include "unit/platform/linux/UntypedListings.h"

#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace {

bool isUntyped = false;

}  // namespace

// This definition comes before the C library's.
extern "C" ssize_t getdents64(int folder, void* block, std::size_t size) noexcept {
  const ssize_t count = syscall(SYS_getdents64, folder, block, size);
  for (ssize_t place = 0; isUntyped && place < count;) {
    auto* const entry = reinterpret_cast<dirent64*>(static_cast<char*>(block) + place);
    entry->d_type = DT_UNKNOWN;
    place += entry->d_reclen;
  }
  return count;
}

namespace installer::test {

UntypedListings::UntypedListings() {
  isUntyped = true;
}

UntypedListings::~UntypedListings() {
  isUntyped = false;
}

}  // namespace installer::test
