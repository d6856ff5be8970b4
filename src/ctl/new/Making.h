#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ctl/lint/Finding.h"
#include "ctl/new/Wanted.h"

namespace installer::ctl::package {

// What became of the wishes.
struct Outcome {
  bool isMade = false;
  std::vector<std::string> keyStores;  // their names in the package, sorted
  lint::Findings findings;             // in the package, at its own place
};

// Why there is no package, and nothing of one.
struct CannotMake {
  std::string reason;
};

// Whether warnings and errors that are found in a package keep it from being made.
enum class Despite { nothing, findings };

// Makes the package in a new or empty folder, whole or not at all.
std::variant<CannotMake, Outcome> make(const Wanted& wanted, Despite despite);

}  // namespace installer::ctl::package
