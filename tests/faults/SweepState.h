#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "faults/Table.h"

namespace installer::faults {

// What came of a point.
struct Swept {
  Tally tally;
  std::vector<std::string> violations;  // a line for each, as it is told
};

// Which points have been swept, and what came of each: kept in a file, so that a sweep which was
// broken off goes on, and several processes can share one.
class SweepState {
 public:
  // "" keeps nothing.
  explicit SweepState(std::string file);

  // What came of a point of before; nothing for a new one.
  std::optional<Swept> known(const std::string& point) const;
  void add(const std::string& point, const Swept& swept);

 private:
  void read(const std::string& line, Swept& swept);

  std::map<std::string, Swept> _points;
  std::string _file;
};

}  // namespace installer::faults
