#pragma once

#include <map>
#include <optional>
#include <string>

#include "faults/Table.h"

namespace installer::faults {

// Which points have been swept, and what came of each: kept in a file, so that a sweep which was
// broken off goes on, and several processes can share one.
class SweepState {
 public:
  // "" keeps nothing.
  explicit SweepState(std::string file);

  // What came of a point of before; nothing for a new one.
  std::optional<Tally> known(const std::string& point) const;
  void add(const std::string& point, const Tally& tally);

 private:
  std::map<std::string, Tally> _points;
  std::string _file;
};

}  // namespace installer::faults
