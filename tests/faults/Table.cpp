#include "faults/Table.h"

#include <fmt/format.h>

#include <algorithm>

namespace installer::faults {

namespace {

using Cells = std::vector<std::string>;

// "fail-EIO" belongs to "fail", "hard-link-deploy" to "hard-link".
std::string groupOf(const std::string& kind) {
  const std::string hardLink = "hard-link";
  return kind.starts_with(hardLink) ? hardLink : kind.substr(0, kind.find('-'));
}

std::string lineOf(const Cells& cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + " |";
  return line + "\n";
}

std::string inSeconds(double seconds) {
  return fmt::format("{:.0f}", seconds);
}

}  // namespace

Tally& Tally::operator+=(const Tally& more) {
  points += more.points;
  violations += more.violations;
  exchanges += more.exchanges;
  seconds += more.seconds;
  return *this;
}

void Table::addScenario(const std::string& scenario, std::size_t calls) {
  _lines.push_back({scenario, calls, {}});
}

void Table::add(const std::string& scenario, const std::string& kind, const Tally& tally) {
  const std::string group = groupOf(kind);
  if (std::find(_groups.begin(), _groups.end(), group) == _groups.end()) _groups.push_back(group);
  const auto line = std::find_if(_lines.begin(), _lines.end(),
                                 [&](const Line& known) { return known.scenario == scenario; });
  if (line != _lines.end()) line->groups[group] += tally;
}

Tally Table::whole(const Line& line) const {
  Tally sum;
  for (const auto& [group, tally] : line.groups) sum += tally;
  return sum;
}

Tally Table::column(const std::string& group) const {
  Tally sum;
  for (const Line& line : _lines)
    if (const auto found = line.groups.find(group); found != line.groups.end())
      sum += found->second;
  return sum;
}

Tally Table::all() const {
  Tally sum;
  for (const Line& line : _lines) sum += whole(line);
  return sum;
}

std::vector<std::string> Table::headCells() const {
  Cells cells{"Scenario", "Calls"};
  for (const std::string& group : _groups) cells.push_back("`" + group + "`");
  cells.insert(cells.end(), {"Violations", "Seconds"});
  return cells;
}

std::vector<std::string> Table::cellsOf(const Line& line) const {
  Cells cells{"`" + line.scenario + "`", std::to_string(line.calls)};
  for (const std::string& group : _groups) {
    const auto found = line.groups.find(group);
    cells.push_back(found == line.groups.end() ? "" : std::to_string(found->second.points));
  }
  const Tally sum = whole(line);
  cells.insert(cells.end(), {std::to_string(sum.violations), inSeconds(sum.seconds)});
  return cells;
}

std::string Table::sums() const {
  Cells points{"**Points**", ""};
  Cells violations{"**Violations**", ""};
  Cells seconds{"**Seconds**", ""};
  for (const std::string& group : _groups) {
    const Tally sum = column(group);
    points.push_back(std::to_string(sum.points));
    violations.push_back(std::to_string(sum.violations));
    seconds.push_back(inSeconds(sum.seconds));
  }
  const Tally sum = all();
  points.insert(points.end(), {"", ""});
  violations.insert(violations.end(), {std::to_string(sum.violations), ""});
  seconds.insert(seconds.end(), {"", inSeconds(sum.seconds)});
  return lineOf(points) + lineOf(violations) + lineOf(seconds);
}

std::string Table::text() const {
  const Cells head = headCells();
  std::string text = lineOf(head) + lineOf(Cells(head.size(), "---"));
  for (const Line& line : _lines) text += lineOf(cellsOf(line));
  const Tally sum = all();
  return text + sums() +
         fmt::format("\n{} points, {} violations, {} exchanges by attackers\n", sum.points,
                     sum.violations, sum.exchanges);
}

}  // namespace installer::faults
