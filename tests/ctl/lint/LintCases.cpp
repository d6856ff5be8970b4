#include "ctl/lint/LintCases.h"

namespace installer::ctl::lint::test {

namespace {

std::vector<LintCase> all() {
  std::vector<LintCase> cases;
  for (const auto& some : {descriptionCases, placesCases, manifestsCases, settingsCases, filesCases,
                           surroundingsCases}) {
    const std::vector<LintCase> more = some();
    cases.insert(cases.end(), more.begin(), more.end());
  }
  return cases;
}

}  // namespace

const std::vector<LintCase>& lintCases() {
  static const std::vector<LintCase> cases = all();
  return cases;
}

}  // namespace installer::ctl::lint::test
