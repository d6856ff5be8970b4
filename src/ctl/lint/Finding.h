#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ctl/lint/Rule.h"

namespace installer::ctl::lint {

// Where something was found.
struct Place {
  std::string file;                 // the file or folder, as the installer spells it
  std::optional<std::string> key;   // in a file of keys
  std::optional<std::size_t> line;  // from 1; absent where it is not known
};

struct Finding {
  const Rule* rule;  // never null
  Place place;
  std::string message;  // the rule's sentence told of this package
};

// What was found, in the order in which it was looked for. A file can break one rule a million
// times: only the first of each are kept, the others counted.
class Findings {
 public:
  static constexpr std::size_t kMostOfOneRule = 20;
  // Of messages, keys and files, bytes; of longer ones beginning and end are kept.
  static constexpr std::size_t kLongestText = 4096;

  // What the disabled rules find does not count.
  explicit Findings(std::set<std::string> disabled = {}) : _disabled(std::move(disabled)) {}

  void add(const Rule& rule, Place place, std::string message);

  const std::vector<Finding>& kept() const { return _kept; }
  // How many there were of the level, those that are not kept among them.
  std::size_t count(Level level) const;
  // Rules of which not all are kept, with the number of the others.
  std::map<std::string_view, std::size_t> dropped() const;
  // Whatever lies at `from` is told of at `to`.
  void move(const std::string& from, const std::string& to);

 private:
  std::set<std::string> _disabled;  // identifiers of rules
  std::vector<Finding> _kept;
  std::map<const Rule*, std::size_t> _counts;
};

}  // namespace installer::ctl::lint
