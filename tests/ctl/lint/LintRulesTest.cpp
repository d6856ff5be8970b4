// Each rule finds what breaks it, and nothing that only comes near to that.

#include <gmock/gmock.h>

#include <set>

#include "ctl/lint/LintCases.h"
#include "ctl/lint/RuleTable.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"
#include "support/TreeSnapshot.h"

namespace installer::ctl::lint::test {
namespace {

using installer::test::snapshotOf;
using installer::test::TemporaryFolder;
using installer::test::TreeDiff;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;

std::vector<std::string> rulesIn(const Findings& findings) {
  std::vector<std::string> ids;
  for (const Finding& finding : findings.kept()) ids.emplace_back(finding.rule->id);
  return ids;
}

// The rules that the world's package breaks.
std::vector<std::string> brokenIn(const LintWorld& world) {
  const auto answer = lint(world.request());
  if (const auto* reason = std::get_if<CannotLook>(&answer)) {
    ADD_FAILURE() << reason->reason;
    return {};
  }
  return rulesIn(std::get<Findings>(answer));
}

class LintRulesTest : public ::testing::TestWithParam<LintCase> {
 protected:
  LintRulesTest() { _world.makeInstance(); }

  TemporaryFolder _folder;
  LintWorld _world{_folder.path()};
};

TEST_P(LintRulesTest, WhatBreaksTheRuleIsFound) {
  GetParam().spoil(_world);

  EXPECT_THAT(brokenIn(_world), Contains(GetParam().rule));
}

TEST_P(LintRulesTest, WhatComesNearIsNotFound) {
  if (GetParam().mend) GetParam().mend(_world);

  EXPECT_THAT(brokenIn(_world), Not(Contains(GetParam().rule)));
}

TEST_P(LintRulesTest, ADisabledRuleFindsNothing) {
  GetParam().spoil(_world);
  Request request = _world.request();
  request.disabled = {GetParam().rule};

  const auto answer = lint(request);

  ASSERT_TRUE(std::holds_alternative<Findings>(answer));
  EXPECT_THAT(rulesIn(std::get<Findings>(answer)), Not(Contains(GetParam().rule)));
}

TEST_P(LintRulesTest, LookingChangesNothing) {
  GetParam().spoil(_world);
  const auto before = snapshotOf(_folder.path());

  brokenIn(_world);

  EXPECT_THAT(TreeDiff(before, snapshotOf(_folder.path())).lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Lint, LintRulesTest, ::testing::ValuesIn(lintCases()),
                         [](const auto& given) { return given.param.title(); });

class LintTableTest : public ::testing::Test {
 protected:
  TemporaryFolder _folder;
  LintWorld _world{_folder.path()};
};

TEST_F(LintTableTest, APackageAsItShouldBeBreaksNoRule) {
  proves("LINT-8");
  EXPECT_THAT(brokenIn(_world), IsEmpty());
}

TEST_F(LintTableTest, NorDoesItBesideItsInstanceAndTheOlderPackage) {
  _world.makeInstance();
  _world.instance = LintWorld::kBundle;
  _world.older = LintWorld::kOlder;

  EXPECT_THAT(brokenIn(_world), IsEmpty());
}

TEST_F(LintTableTest, EachRuleIsBrokenByACase) {
  std::set<std::string> broken;
  for (const LintCase& one : lintCases()) broken.insert(one.rule);

  for (const Rule& rule : kRules) EXPECT_THAT(broken, Contains(std::string(rule.id)));
}

TEST_F(LintTableTest, IdentifiersAscendAndHaveThreeDigits) {
  std::string_view last;
  for (const Rule& rule : kRules) {
    EXPECT_THAT(std::string(rule.id), ::testing::MatchesRegex("HF[1-9][0-9][0-9]"));
    EXPECT_LT(last, rule.id);
    last = rule.id;
  }
}

TEST_F(LintTableTest, EachTextIsASentence) {
  for (const Rule& rule : kRules)
    for (const std::string_view text : {rule.sentence, rule.remedy, rule.explanation})
      EXPECT_TRUE(text.size() > 1 && (text.ends_with('.') || text.ends_with(':')))
          << rule.id << ": " << text;
}

}  // namespace
}  // namespace installer::ctl::lint::test
