#pragma once

#include <optional>
#include <string>
#include <vector>

namespace installer::ctl::lint {

// Where a look has to be possible before anything can be said.
struct Wanted {
  std::vector<std::string> files;
  std::vector<std::string> folders;  // themselves
  std::vector<std::string> trees;    // with all below them
};

// Why one of them is kept from the caller, who would take what is there for missing; nullopt when
// none is. Nothing at the place, something of another kind and a file that nobody can read are
// findings, not reasons.
[[nodiscard]] std::optional<std::string> whyClosed(const Wanted& wanted);

}  // namespace installer::ctl::lint
