#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace installer::test {

// The same numbers for the same seed on every machine (splitmix64).
class RandomSource {
 public:
  explicit RandomSource(std::uint64_t seed) : _state(seed) {}

  std::uint64_t next() {
    std::uint64_t mixed = (_state += 0x9E3779B97F4A7C15u);
    mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9u;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBu;
    return mixed ^ mixed >> 31;
  }

  // 0 to bound - 1; bound is at least 1.
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(next() % bound); }

  template <class Item>
  const Item& oneOf(const std::vector<Item>& items) {
    return items[below(items.size())];
  }

  // At most `most` of the pieces, one behind the other.
  std::string textOf(const std::vector<std::string>& pieces, std::size_t most) {
    std::string text;
    for (std::size_t left = below(most + 1); left > 0; --left) text += oneOf(pieces);
    return text;
  }

 private:
  std::uint64_t _state;
};

inline std::uint64_t numberFromEnvironment(const char* variable, std::uint64_t otherwise) {
  const char* text = std::getenv(variable);
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

// Runs `check` with a fresh source for each of HOTFIX_CASES cases (unless it is set as many as
// usual, 100,000 where a case is cheap), from seed HOTFIX_SEED on (1 unless it is set), and stops
// at the first case that fails, naming its seed.
template <class Check>
void forRandomCases(Check check, std::uint64_t usual = 100'000) {
  const std::uint64_t cases = numberFromEnvironment("HOTFIX_CASES", usual);
  const std::uint64_t first = numberFromEnvironment("HOTFIX_SEED", 1);
  for (std::uint64_t seed = first; seed < first + cases; ++seed) {
    RandomSource random(seed);
    check(random);
    if (::testing::Test::HasFailure()) {
      ADD_FAILURE() << "to repeat this case: HOTFIX_SEED=" << seed << " HOTFIX_CASES=1";
      return;
    }
  }
}

}  // namespace installer::test
