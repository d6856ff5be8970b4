#include "ctl/lint/Finding.h"

#include <utility>

namespace installer::ctl::lint {

void Findings::add(const Rule& rule, Place place, std::string message) {
  if (_disabled.contains(std::string(rule.id))) return;
  if (_counts[&rule]++ < kMostOfOneRule)
    _kept.push_back({&rule, std::move(place), std::move(message)});
}

std::size_t Findings::count(Level level) const {
  std::size_t sum = 0;
  for (const auto& [rule, count] : _counts)
    if (rule->level == level) sum += count;
  return sum;
}

std::map<std::string_view, std::size_t> Findings::dropped() const {
  std::map<std::string_view, std::size_t> dropped;
  for (const auto& [rule, count] : _counts)
    if (count > kMostOfOneRule) dropped[rule->id] = count - kMostOfOneRule;
  return dropped;
}

}  // namespace installer::ctl::lint
