#include "support/Memory.h"

#include <malloc/malloc.h>

namespace installer::test {

std::ptrdiff_t bytesInUse() {
  malloc_statistics_t all{};
  malloc_zone_statistics(nullptr, &all);
  return static_cast<std::ptrdiff_t>(all.size_in_use);
}

}  // namespace installer::test
