#include "support/Memory.h"

#include <malloc.h>

namespace installer::test {

std::ptrdiff_t bytesInUse() {
  const struct mallinfo2 info = ::mallinfo2();
  return static_cast<std::ptrdiff_t>(info.uordblks + info.hblkhd);
}

}  // namespace installer::test
