#include "ctl/plan/UnifiedDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace installer::ctl {

namespace {

constexpr std::size_t kContext = 3;               // lines
constexpr std::size_t kMaximumCells = 4'000'000;  // of the table, 4 bytes each

using Lines = std::vector<std::string_view>;

// Each with its line feed, so that a last line without one is another line.
Lines linesOf(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

bool isText(std::string_view bytes) {
  return bytes.find('\0') == std::string_view::npos;
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
  Alignment(const Lines& before, const Lines& after) : _before(before), _after(after) {
    const auto differs = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    _start = static_cast<std::size_t>(differs.first - before.begin());
    _columns = after.size() - _start + 1;
  }

  bool isTooLarge() const { return (_before.size() - _start + 1) * _columns > kMaximumCells; }

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
  // How many lines the rests from here on have in common.
  std::uint32_t& common(std::size_t old, std::size_t now) {
    return _table[(old - _start) * _columns + now - _start];
  }

  void fill() {
    _table.resize((_before.size() - _start + 1) * _columns);
    for (std::size_t old = _before.size(); old-- > _start;)
      for (std::size_t now = _after.size(); now-- > _start;)
        common(old, now) = _before[old] == _after[now]
                               ? common(old + 1, now + 1) + 1
                               : std::max(common(old + 1, now), common(old, now + 1));
  }

  char markAt(std::size_t old, std::size_t now) {
    if (old == _before.size()) return '+';
    if (now == _after.size()) return '-';
    if (_before[old] == _after[now]) return ' ';
    return common(old + 1, now) >= common(old, now + 1) ? '-' : '+';
  }

  const Lines& _before;
  const Lines& _after;
  std::size_t _start = 0;  // lines that are equal at the beginning
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

std::optional<std::string> unifiedDiff(std::string_view before, std::string_view after) {
  if (!isText(before) || !isText(after)) return std::nullopt;
  const Lines old = linesOf(before);
  const Lines now = linesOf(after);
  Alignment alignment(old, now);
  if (alignment.isTooLarge()) return std::nullopt;
  return hunksOf(alignment.run());
}

}  // namespace installer::ctl
