// What the installer itself makes of each broken rule: the same package that breaks it, installed
// in the sandbox of the installer's own tests.

#include <gmock/gmock.h>

#include <set>
#include <string_view>

#include "ctl/lint/RuleTable.h"
#include "ctl/lint/harm/HarmTest.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ctl::lint::kRules;
using ctl::lint::Level;
using ctl::lint::Rule;
using ::testing::Contains;

std::vector<Harm> harms() {
  std::vector<Harm> all;
  for (const auto& some : {descriptionHarms, placesHarms, manifestsHarms, settingsHarms, filesHarms,
                           surroundingsHarms}) {
    const std::vector<Harm> more = some();
    all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

TEST_P(HarmTest, TheInstallerDoesIt) {
  proves("LINT-8");
  if (GetParam().prepare) GetParam().prepare(*this);
  spoil();

  _result = _sandbox.run({_world->package, _destination}, _options);

  GetParam().judge(*this);
}

INSTANTIATE_TEST_SUITE_P(Lint, HarmTest, ::testing::ValuesIn(harms()),
                         [](const auto& given) { return given.param.title; });

// What only the platform, or a disk of macOS, makes of a package.
const std::set<std::string> kShownElsewhere = {
    "HF224", "HF225", "HF227", "HF308", "HF310",  // LintTest of the sample, with its launcher
    "HF603", "HF604", "HF605"};

// Tells of the looking itself.
constexpr std::string_view kBoundedLook = "HF608";

TEST(HarmTableTest, EachErrorAndWarningIsShownToDoHarm) {
  std::set<std::string> shown = kShownElsewhere;
  for (const Harm& harm : harms()) shown.insert(harm.title.substr(0, 5));

  for (const Rule& rule : kRules) {
    const bool harms = rule.level != Level::note && rule.id != kBoundedLook;
    if (harms) {
      EXPECT_THAT(shown, Contains(std::string(rule.id)));
    }
  }
}

}  // namespace
}  // namespace installer::cli
