#pragma once

#include <optional>
#include <set>
#include <string>
#include <variant>

#include "ctl/lint/Finding.h"

namespace installer::ctl::lint {

// What is to be looked at.
struct Request {
  std::string package;
  std::optional<std::string> instance;  // an application bundle
  std::optional<std::string> older;     // the package that was installed before this one
  std::set<std::string> disabled;       // identifiers of rules
};

// Why nothing could be looked at.
struct CannotLook {
  std::string reason;
};

// Looks at the package by what the installer itself would read of it, and changes nothing. Nothing
// is logged.
std::variant<CannotLook, Findings> lint(const Request& request);

}  // namespace installer::ctl::lint
