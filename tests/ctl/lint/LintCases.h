#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ctl/lint/LintWorld.h"

namespace installer::ctl::lint::test {

// One way to break one rule.
struct LintCase {
  std::string rule;
  std::string name;                           // of letters; "" for a rule's first
  std::function<void(LintWorld&)> spoil;      // breaks the rule
  std::function<void(LintWorld&)> mend = {};  // comes near to that and breaks it not

  std::string title() const { return rule + name; }
};

// By subject.
std::vector<LintCase> descriptionCases();
std::vector<LintCase> placesCases();
std::vector<LintCase> manifestsCases();
std::vector<LintCase> settingsCases();
std::vector<LintCase> filesCases();
std::vector<LintCase> surroundingsCases();

// All of them: at least one for each rule.
const std::vector<LintCase>& lintCases();

}  // namespace installer::ctl::lint::test
