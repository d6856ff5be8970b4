#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "hotfix/base/PropertyList.h"
#include "support/RandomText.h"

namespace installer::test {

// Random property-list values that XML can tell without loss.
class RandomValues {
 public:
  explicit RandomValues(std::uint64_t seed) : _random(seed) {}

  // A dictionary of up to `most` entries, with containers inside it down to `depth` levels.
  PropertyList::Dictionary dictionary(std::size_t most, int depth) {
    PropertyList::Dictionary dictionary;
    for (std::size_t left = _random.below(most + 1); left > 0; --left)
      dictionary.set(text() + std::to_string(left), value(depth));
    return dictionary;
  }

  PropertyList::Value value(int depth) {
    switch (_random.below(depth > 0 ? 10 : 8)) {
      case 0:
        return _random.below(2) == 1;
      case 1:
        return static_cast<std::int64_t>(_random.next() >> _random.below(64));
      case 2:
        return _random.next() >> _random.below(64);
      case 3:
        return real();
      case 4:
        return PropertyList::Data{text() + text()};
      case 5:
        return date();
      case 6:
        return PropertyList::Uid{_random.next() >> (32 + _random.below(32))};
      case 7:
        return text();
      case 8:
        return array(depth - 1);
      default:
        return dictionary(6, depth - 1);
    }
  }

  std::string text() {
    static const std::vector<std::string> pieces = {
        "a",      "Z",      " ",      "\t",         "\n",         "<",          "&",      ">",
        "\"",     "'",      "]]>",    "&amp;",      "\u00E9",     "\u0416",     "\u65E5", "\uFFFD",
        "\uE000", "\uD7FF", "\u2028", "\U00010000", "\U0001F600", "\U0010FFFF", "key",    "\u0085"};
    return _random.textOf(pieces, 8);
  }

 private:
  PropertyList::Value array(int depth) {
    PropertyList::Array array;
    for (std::size_t left = _random.below(6); left > 0; --left) array.push_back(value(depth));
    return array;
  }

  double real() {
    const double number = std::bit_cast<double>(_random.next());
    return std::isnan(number) ? static_cast<double>(_random.below(1000)) / 8 : number;
  }

  // Years 1901 to 2100, which every judge knows.
  PropertyList::Date date() {
    constexpr std::int64_t century = std::int64_t{36525} * 86400;
    const auto seconds = static_cast<std::int64_t>(_random.below(2 * century)) - century;
    return {static_cast<double>(seconds)};
  }

  RandomSource _random;
};

}  // namespace installer::test
