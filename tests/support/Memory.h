#pragma once

#include <malloc.h>

#include <cstddef>

namespace installer::test {

// How many more bytes are in use after the action's hundredth turn than after its third: what the
// first turns leave for good (caches, tables) does not count. Under a sanitizer that looks for
// leaks itself always 0.
template <class Action>
std::ptrdiff_t bytesKeptBy(Action action) {
  const auto inUse = [] {
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<std::ptrdiff_t>(info.uordblks + info.hblkhd);
  };
  for (int turn = 0; turn < 3; ++turn) action();
  const std::ptrdiff_t before = inUse();
  for (int turn = 3; turn < 100; ++turn) action();
  return inUse() - before;
}

}  // namespace installer::test
