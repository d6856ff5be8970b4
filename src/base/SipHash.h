#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace installer {

struct HashKey {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
};

// SipHash of the bytes. More rounds a block and at the end make it stronger and slower: 2 and 4 are
// its authors' first choice, 1 and 3 do for tables in memory.
std::uint64_t sipHash(std::string_view bytes, const HashKey& key, int rounds, int lastRounds);

}  // namespace installer
