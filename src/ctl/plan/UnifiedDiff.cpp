#include "ctl/plan/UnifiedDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <unordered_map>
#include <vector>

namespace installer::ctl {

namespace {

constexpr std::size_t kContext = 3;               // lines
constexpr std::size_t kMaximumLines = 1'000'000;  // of each text
constexpr std::size_t kMaximumCells = 4'000'000;  // of the table, 4 bytes each

using Lines = std::vector<std::string_view>;

std::size_t numberOfLines(std::string_view text) {
  const auto feeds = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  return text.empty() || text.ends_with('\n') ? feeds : feeds + 1;
}

// Each with its line feed, so that a last line without one is another line.
Lines linesOf(std::string_view text) {
  Lines lines;
  lines.reserve(numberOfLines(text));
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

struct Step {
  char mark;  // ' ', '-' or '+'
  std::string_view line;
  std::size_t before;  // lines of each text in front of it
  std::size_t after;
};

// Finds the fewest lines to take away and to add, in the parts that differ at all.
class Alignment {
 public:
  Alignment(const Lines& before, const Lines& after)
      : _before(before), _after(after), _old(numbersOf(before)), _now(numbersOf(after)) {
    const auto differs = std::mismatch(_old.begin(), _old.end(), _now.begin(), _now.end());
    const auto end = std::mismatch(_old.rbegin(), std::make_reverse_iterator(differs.first),
                                   _now.rbegin(), std::make_reverse_iterator(differs.second));
    _start = static_cast<std::size_t>(differs.first - _old.begin());
    _oldEnd = static_cast<std::size_t>(end.first.base() - _old.begin());
    _nowEnd = static_cast<std::size_t>(end.second.base() - _now.begin());
    _columns = _nowEnd - _start + 1;
  }

  bool isTooLarge() const { return (_oldEnd - _start + 1) * _columns > kMaximumCells; }

  std::vector<Step> run() {
    fill();
    std::vector<Step> steps;
    std::size_t old = 0;
    std::size_t now = 0;
    while (old < _before.size() || now < _after.size()) {
      const char mark = markAt(old, now);
      steps.push_back({mark, mark == '+' ? _after[now] : _before[old], old, now});
      if (mark != '+') ++old;
      if (mark != '-') ++now;
    }
    return steps;
  }

 private:
  using Numbers = std::vector<std::size_t>;

  // Equal lines have the same number: however long they are, they are compared once.
  Numbers numbersOf(const Lines& lines) {
    Numbers numbers;
    numbers.reserve(lines.size());
    for (const std::string_view line : lines)
      numbers.push_back(_known.try_emplace(line, _known.size()).first->second);
    return numbers;
  }

  // How many lines the rests from here on have in common, without the equal end.
  std::uint32_t& common(std::size_t old, std::size_t now) {
    return _table[(old - _start) * _columns + now - _start];
  }

  void fill() {
    _table.resize((_oldEnd - _start + 1) * _columns);
    for (std::size_t old = _oldEnd; old-- > _start;)
      for (std::size_t now = _nowEnd; now-- > _start;)
        common(old, now) = _old[old] == _now[now]
                               ? common(old + 1, now + 1) + 1
                               : std::max(common(old + 1, now), common(old, now + 1));
  }

  char markAt(std::size_t old, std::size_t now) {
    const bool isOldDone = old == _oldEnd;
    const bool isNowDone = now == _nowEnd;
    if (isOldDone != isNowDone) return isOldDone ? '+' : '-';
    if (old < _start || old >= _oldEnd || _old[old] == _now[now]) return ' ';
    return common(old + 1, now) >= common(old, now + 1) ? '-' : '+';
  }

  const Lines& _before;
  const Lines& _after;
  std::unordered_map<std::string_view, std::size_t> _known;
  const Numbers _old;
  const Numbers _now;
  std::size_t _start = 0;   // lines that are equal at the beginning
  std::size_t _oldEnd = 0;  // where those begin that are equal at the end
  std::size_t _nowEnd = 0;
  std::size_t _columns = 0;
  std::vector<std::uint32_t> _table;
};

std::string shownLine(const Step& step) {
  const std::string line = step.mark + std::string(step.line);
  return line.ends_with('\n') ? line : line + "\n\\ No newline at end of file\n";
}

// A part that begins behind that many lines; an empty one is told by the line in front of it.
std::string rangeOf(std::size_t behind, std::size_t count) {
  const std::size_t first = count == 0 ? behind : behind + 1;
  return count == 1 ? fmt::format("{}", first) : fmt::format("{},{}", first, count);
}

std::string hunk(const std::vector<Step>& steps, std::size_t first, std::size_t end) {
  std::size_t before = 0;
  std::size_t after = 0;
  std::string text;
  for (std::size_t index = first; index < end; ++index) {
    if (steps[index].mark != '+') ++before;
    if (steps[index].mark != '-') ++after;
    text += shownLine(steps[index]);
  }
  return fmt::format("@@ -{} +{} @@\n{}", rangeOf(steps[first].before, before),
                     rangeOf(steps[first].after, after), text);
}

std::string hunksOf(const std::vector<Step>& steps) {
  std::string text;
  std::size_t index = 0;
  const auto nextChange = [&](std::size_t from) {
    while (from < steps.size() && steps[from].mark == ' ') ++from;
    return from;
  };
  for (index = nextChange(0); index < steps.size();) {
    const std::size_t first = index - std::min(index, kContext);
    std::size_t end = index;
    for (std::size_t change = index; change < steps.size() && change <= end + 2 * kContext;
         change = nextChange(end))
      end = change + 1;
    text += hunk(steps, first, std::min(end + kContext, steps.size()));
    index = nextChange(end);
  }
  return text;
}

}  // namespace

bool isText(std::string_view bytes) {
  return bytes.find('\0') == std::string_view::npos;
}

std::optional<std::string> unifiedDiff(std::string_view before, std::string_view after) {
  if (std::max(numberOfLines(before), numberOfLines(after)) > kMaximumLines) return std::nullopt;
  const Lines old = linesOf(before);
  const Lines now = linesOf(after);
  Alignment alignment(old, now);
  if (alignment.isTooLarge()) return std::nullopt;
  return hunksOf(alignment.run());
}

}  // namespace installer::ctl
