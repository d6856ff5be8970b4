#include "ctl/Nearest.h"

#include <algorithm>
#include <cstddef>

namespace installer::ctl {

namespace {

// Nobody means a word by such a long one; it also bounds the work.
constexpr std::size_t kLongest = 64;

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& letter : result)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return result;
}

using Row = std::vector<std::size_t>;

// How many letters are to be added, taken away, changed or exchanged with their neighbour.
std::size_t distance(const std::string& one, const std::string& other) {
  Row beforeLast(other.size() + 1);
  Row last(other.size() + 1);
  Row current(other.size() + 1);
  for (std::size_t j = 0; j <= other.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= one.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const std::size_t changed = last[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      current[j] = std::min({last[j] + 1, current[j - 1] + 1, changed});
      const bool areExchanged =
          i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
      if (areExchanged) current[j] = std::min(current[j], beforeLast[j - 2] + 1);
    }
    beforeLast.swap(last);
    last.swap(current);
  }
  return last[other.size()];
}

}  // namespace

std::optional<std::string> nearest(std::string_view word, const std::vector<std::string>& known) {
  if (word.size() > kLongest) return std::nullopt;
  std::optional<std::string> best;
  // A third of the letters may be wrong, one in short words.
  std::size_t most = std::max<std::size_t>(1, word.size() / 3) + 1;
  for (const std::string& candidate : known) {
    const std::size_t apart = distance(lowered(word), lowered(candidate));
    if (apart >= most) continue;
    most = apart;
    best = candidate;
  }
  return best;
}

}  // namespace installer::ctl
