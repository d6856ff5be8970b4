#pragma once

#include <fstream>
#include <map>
#include <optional>
#include <string>

namespace installer::faults {

// Which points have been swept, and how many violations each had: kept in a file, so that a sweep
// that was broken off goes on.
class SweepState {
 public:
  // "" keeps nothing.
  explicit SweepState(const std::string& file);

  // The violations of a point of before; nothing for a new one.
  std::optional<std::size_t> known(const std::string& point) const;
  void add(const std::string& point, std::size_t violations);

 private:
  std::map<std::string, std::size_t> _points;
  std::ofstream _file;
};

}  // namespace installer::faults
