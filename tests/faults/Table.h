#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace installer::faults {

// What came of points, one or many.
struct Tally {
  std::size_t points = 0;
  std::size_t violations = 0;
  std::uint64_t exchanges = 0;
  double seconds = 0;

  Tally& operator+=(const Tally& more);
};

// What a sweep came to, a line for each scenario and a column for each group of kinds: "fail" for
// all that begin so.
class Table {
 public:
  void addScenario(const std::string& scenario, std::size_t calls);
  void add(const std::string& scenario, const std::string& kind, const Tally& tally);

  bool empty() const { return _lines.empty(); }
  std::size_t violations() const { return all().violations; }
  // In the form of a document's table: points by scenario and group, and what they came to.
  std::string text() const;

 private:
  struct Line {
    std::string scenario;
    std::size_t calls = 0;
    std::map<std::string, Tally> groups;
  };

  Tally whole(const Line& line) const;
  Tally column(const std::string& group) const;
  Tally all() const;

  std::vector<std::string> headCells() const;
  std::vector<std::string> cellsOf(const Line& line) const;
  std::string sums() const;

  std::vector<std::string> _groups;
  std::vector<Line> _lines;
};

}  // namespace installer::faults
