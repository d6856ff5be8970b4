#include "ctl/report/Fleet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "support/Proves.h"

namespace installer::ctl::report {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

ToldInstance instance(InstanceState state, std::optional<std::string> version = std::nullopt,
                      const std::string& place = "/A/Q.app") {
  return {place, state, std::move(version), {}};
}
ToldRun run(const std::string& cause, std::optional<std::int64_t> ended = 100) {
  ToldRun told;
  told.cause = cause;
  told.ended = ended;
  return told;
}
ToldRun withSteps(ToldRun told) {
  told.steps = {{StepKind::provision, 0, 9}};
  return told;
}
Told told(const std::string& machine, std::int64_t at, std::vector<ToldInstance> instances,
          std::optional<ToldRun> last = std::nullopt) {
  return {machine, at, std::move(instances), std::move(last)};
}
std::vector<std::string> names(const Fleet& fleet) {
  std::vector<std::string> all;
  for (const Machine& machine : fleet.machines) all.push_back(machine.name);
  return all;
}
std::vector<std::pair<std::string, std::size_t>> counts(const std::vector<Group>& groups) {
  std::vector<std::pair<std::string, std::size_t>> all;
  for (const Group& group : groups) all.emplace_back(group.name, group.machines.size());
  return all;
}
// The only machine's.
Standing standing(std::vector<ToldInstance> instances, std::optional<ToldRun> last) {
  return fleetOf({told("m", 1, std::move(instances), std::move(last))}).machines.at(0).standing;
}
std::string label(std::vector<ToldInstance> instances, std::optional<ToldRun> last) {
  return fleetOf({told("m", 1, std::move(instances), std::move(last))}).machines.at(0).label();
}

constexpr InstanceState kInstalled = InstanceState::hotfixInstalled;

TEST(ReportFleetTest, TheWorstMachinesComeFirstThenTheNames) {
  proves("REPORT-1");
  const Fleet fleet = fleetOf({
      told("b", 1, {instance(kInstalled, "1")}),
      told("a", 1, {instance(kInstalled, "1")}),
      told("c", 1, {instance(InstanceState::noHotfix)}),
      told("d", 1, {}, run("at-work")),
      told("e", 1, {instance(InstanceState::needsAttention)}),
      told("f", 1, {instance(kInstalled, "1")}, run("interrupted")),
  });

  EXPECT_THAT(names(fleet), ElementsAre("f", "e", "d", "c", "a", "b"));
}

TEST(ReportFleetTest, OfEachMachineTheLastTellingCounts) {
  proves("REPORT-2");
  const Fleet fleet = fleetOf({
      told("m", 30, {instance(kInstalled, "3")}),
      told("m", 10, {instance(kInstalled, "1")}),
      told("m", 20, {instance(kInstalled, "2"), instance(kInstalled, "9", "/A/R.app")}),
  });

  ASSERT_THAT(fleet.machines, SizeIs(1));
  EXPECT_THAT(fleet.machines[0].versions(), ElementsAre("3", "9"));
  EXPECT_THAT(counts(fleet.versions), ElementsAre(std::pair("3", 1u), std::pair("9", 1u)));
}

TEST(ReportFleetTest, OfARunThatIsToldTwiceTheTellingWithItsStepsCounts) {
  proves("REPORT-2");
  const auto cause = [](const ToldRun& one, const ToldRun& other) {
    const auto of = [](const ToldRun& first, const ToldRun& second) {
      return fleetOf({told("m", 1, {}, first), told("m", 2, {}, second)}).machines[0].run->cause;
    };
    EXPECT_EQ(of(one, other), of(other, one));
    return of(one, other);
  };

  EXPECT_EQ("kept", cause(withSteps(run("kept", 100)), run("status", 160)));
  EXPECT_EQ("status", cause(withSteps(run("kept", 100)), run("status", 161)));
  EXPECT_EQ("kept", cause(withSteps(run("kept", 100)), run("status", std::nullopt)));
  EXPECT_EQ("new", cause(withSteps(run("old", 100)), withSteps(run("new", 101))));
  EXPECT_EQ("new", cause(run("old", std::nullopt), run("new", 0)));
}

TEST(ReportFleetTest, AStatusAfterTheRunStaysTheMachinesState) {
  const Fleet fleet = fleetOf({
      told("m", 10, {instance(kInstalled, "1")}, withSteps(run("installed", 10))),
      told("m", 500, {instance(InstanceState::noHotfix)}),
  });

  EXPECT_EQ(Standing::noHotfix, fleet.machines.at(0).standing);
  EXPECT_EQ("No hotfix", fleet.machines[0].label());
  EXPECT_TRUE(fleet.machines[0].run);
}

TEST(ReportFleetTest, FailuresComeBeforeStates) {
  proves("REPORT-1");
  EXPECT_EQ(Standing::failed,
            standing({instance(InstanceState::needsAttention)}, run("provisioning-failed")));
  EXPECT_EQ(Standing::failed, standing({}, run("unheard-of")));
  EXPECT_EQ(Standing::needsAttention,
            standing({instance(InstanceState::noInstance)}, run("installed")));
  EXPECT_EQ(Standing::needsAttention,
            standing({instance(InstanceState::notReadable)}, run("at-work")));
  EXPECT_EQ(Standing::atWork, standing({instance(kInstalled, "1")}, run("at-work")));
  EXPECT_EQ(Standing::noHotfix, standing({}, std::nullopt));
  EXPECT_EQ(Standing::good, standing({}, run("installed")));
  EXPECT_EQ(Standing::good, standing({instance(kInstalled, "1")}, run("installed-already")));
}

TEST(ReportFleetTest, ALabelSaysWhatIsToBeKnown) {
  EXPECT_EQ("Application running", label({instance(kInstalled, "1")}, run("application-running")));
  EXPECT_EQ("Needs attention", label({instance(InstanceState::needsAttention)}, run("installed")));
  EXPECT_EQ("Not readable",
            label({instance(kInstalled, "1"), instance(InstanceState::notReadable, {}, "/B")}, {}));
  EXPECT_EQ("At work", label({instance(kInstalled, "1")}, run("at-work")));
  EXPECT_EQ("Hotfix installed", label({instance(kInstalled, "1")}, run("installed-already")));
  EXPECT_EQ("Installed already", label({}, run("installed-already")));
  EXPECT_EQ("No instance", label({}, std::nullopt));
  EXPECT_EQ("", labelOf(""));
  EXPECT_EQ("1 a", labelOf("1-a"));
}

TEST(ReportFleetTest, VersionsAreCountedTheMostFrequentFirst) {
  proves("REPORT-1");
  const Fleet fleet = fleetOf({
      told("a", 1, {instance(kInstalled, "1.10")}),
      told("b", 1, {instance(kInstalled, "1.9")}),
      told("c", 1, {instance(kInstalled, "1.9"), instance(kInstalled, "1.9", "/B")}),
      told("d", 1, {instance(InstanceState::noHotfix)}),
      told("e", 1, {instance(InstanceState::notReadable)}),
      told("f", 1, {}),
  });

  EXPECT_THAT(counts(fleet.versions), ElementsAre(std::pair("1.9", 2u), std::pair("not known", 2u),
                                                  std::pair("1.10", 1u), std::pair("none", 1u)));
}

TEST(ReportFleetTest, FailuresAndFindingsAreGrouped) {
  proves("REPORT-1");
  ToldInstance found = instance(InstanceState::needsAttention);
  found.findings = {
      {"left-over-item", "", ""}, {"left-over-item", "", ""}, {"other-owner", "", ""}};
  const Fleet fleet = fleetOf({
      told("a", 1, {}, run("interrupted")),
      told("b", 1, {}, run("application-running")),
      told("c", 1, {}, run("application-running")),
      told("d", 1, {}, run("installed")),
      told("e", 1, {found}),
  });

  EXPECT_THAT(counts(fleet.failures),
              ElementsAre(std::pair("application-running", 2u), std::pair("interrupted", 1u)));
  EXPECT_THAT(counts(fleet.findings),
              ElementsAre(std::pair("left-over-item", 1u), std::pair("other-owner", 1u)));
  EXPECT_EQ("e", fleet.machines[fleet.findings[0].machines[0]].name);
}

// Whatever an installation can answer, the page has the program's own words for it.
TEST(ReportFleetTest, EveryCauseOfAnInstallationIsKnown) {
  proves("REPORT-1");
  std::ifstream file(HOTFIX_SOURCE_DIR "/src/ctl/schema/install-1.schema.json");
  const auto schema = nlohmann::json::parse(file);
  const std::string unknown(wordsOf("unheard-of").remedy);
  std::set<std::string> causes = schema.at("properties").at("cause").at("enum");
  ASSERT_GT(causes.size(), 20u);
  causes.insert({"installed-already", "not-begun"});
  for (const std::string& cause : causes) {
    EXPECT_FALSE(wordsOf(cause).meaning.empty()) << cause;
    EXPECT_NE(unknown, wordsOf(cause).remedy) << cause;
    const bool isWell = cause == "installed" || cause == "installed-already" || cause == "at-work";
    EXPECT_EQ(!isWell, isFailure(cause)) << cause;
  }
  EXPECT_TRUE(isFailure("unheard-of"));
}

TEST(ReportFleetTest, NoMoreInstancesThanAFileMayTellBelongToAMachine) {
  proves("REPORT-5");
  std::vector<Told> all;
  for (int i = 0; i < 200; ++i)
    all.push_back(told("m", i, {instance(kInstalled, "1", "/" + std::to_string(i))}));

  EXPECT_THAT(fleetOf(std::move(all)).machines.at(0).instances, SizeIs(kMostInstances));
}

}  // namespace
}  // namespace installer::ctl::report
