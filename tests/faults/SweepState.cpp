#include "faults/SweepState.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <fstream>
#include <utility>

#include "support/linux/PrivateRoot.h"

namespace installer::faults {

// A line without its end was not finished.
SweepState::SweepState(std::string file) : _file(std::move(file)) {
  std::ifstream stream(_file);
  Tally tally{.points = 1};
  std::string point;
  while (stream >> tally.violations >> tally.exchanges >> tally.seconds &&
         std::getline(stream, point))
    if (!stream.eof()) _points[point.substr(1)] = tally;
}

std::optional<Tally> SweepState::known(const std::string& point) const {
  const auto found = _points.find(point);
  if (found == _points.end()) return std::nullopt;
  return found->second;
}

// In one piece, whoever else adds to the file.
void SweepState::add(const std::string& point, const Tally& tally) {
  if (_file.empty()) return;
  const std::string line =
      fmt::format("{} {} {:.4f} {}\n", tally.violations, tally.exchanges, tally.seconds, point);
  const int file = open(_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  const ssize_t count = write(file, line.data(), line.size());
  close(file);
  if (count != static_cast<ssize_t>(line.size())) test::giveUp("write " + _file);
}

}  // namespace installer::faults
