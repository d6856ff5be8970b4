#include "faults/SweepState.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <utility>

#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace {

constexpr const char* kViolation = "VIOLATION ";

}  // namespace

// A line without its end was not finished.
SweepState::SweepState(std::string file) : _file(std::move(file)) {
  std::ifstream stream(_file);
  Swept swept;
  for (std::string line; std::getline(stream, line) && !stream.eof();) read(line, swept);
}

// The violations of a point stand above it.
void SweepState::read(const std::string& line, Swept& swept) {
  if (line.starts_with(kViolation)) {
    swept.violations.push_back(line);
    return;
  }
  std::istringstream stream(line);
  std::string point;
  swept.tally.points = 1;
  if (stream >> swept.tally.violations >> swept.tally.exchanges >> swept.tally.seconds >> std::ws &&
      std::getline(stream, point))
    _points[point] = std::exchange(swept, {});
}

std::optional<Swept> SweepState::known(const std::string& point) const {
  const auto found = _points.find(point);
  if (found == _points.end()) return std::nullopt;
  return found->second;
}

// In one piece, whoever else adds to the file.
void SweepState::add(const std::string& point, const Swept& swept) {
  if (_file.empty()) return;
  std::string lines;
  for (const std::string& violation : swept.violations) lines += violation + "\n";
  const Tally& tally = swept.tally;
  lines +=
      fmt::format("{} {} {:.4f} {}\n", tally.violations, tally.exchanges, tally.seconds, point);
  const int file = open(_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  const ssize_t count = write(file, lines.data(), lines.size());
  close(file);
  if (count != static_cast<ssize_t>(lines.size())) test::giveUp("write " + _file);
}

}  // namespace installer::faults
