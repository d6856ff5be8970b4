#include "faults/SweepState.h"

namespace installer::faults {

// A line without its end was not finished.
SweepState::SweepState(const std::string& file) {
  if (file.empty()) return;
  std::ifstream stream(file);
  std::string point;
  for (std::size_t violations = 0; stream >> violations && std::getline(stream, point);)
    if (!stream.eof()) _points[point.substr(1)] = violations;
  _file.open(file, std::ios::app);
}

std::optional<std::size_t> SweepState::known(const std::string& point) const {
  const auto found = _points.find(point);
  if (found == _points.end()) return std::nullopt;
  return found->second;
}

void SweepState::add(const std::string& point, std::size_t violations) {
  if (_file.is_open()) _file << violations << ' ' << point << std::endl;
}

}  // namespace installer::faults
