#pragma once

#include <cstddef>

namespace installer::test {

// How many bytes this process has allocated and not given back. Under a sanitizer that looks for
// leaks itself always the same. Defined once in each system's folder.
std::ptrdiff_t bytesInUse();

// How many more bytes are in use after the action's hundredth turn than after its third: what the
// first turns leave for good (caches, tables) does not count.
template <class Action>
std::ptrdiff_t bytesKeptBy(Action action) {
  for (int turn = 0; turn < 3; ++turn) action();
  const std::ptrdiff_t before = bytesInUse();
  for (int turn = 3; turn < 100; ++turn) action();
  return bytesInUse() - before;
}

}  // namespace installer::test
