#include "ctl/report/Documents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl/report/Moment.h"
#include "support/Proves.h"

namespace installer::ctl::report {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::int64_t kModified = 1'000;

json status() {
  return {{"schema", "hotfixctl/status/1"},
          {"instances",
           {{{"rcpHome", "/A/Q.app/rcp"},
             {"bundle", "/A/Q.app"},
             {"state", "needs-attention"},
             {"hotfix", {{"version", "1.5"}, {"identifier", nullptr}}},
             {"findings", {{{"name", "left-over-item"}, {"text", "some"}, {"remedy", "none"}}}}}}},
          {"lastRun",
           {{"modified", "2026-11-22T11:35:02+00:00"},
            {"ageSeconds", 60},
            {"run",
             {{"ending", "provisioning-failed"}, {"cause", nullptr}, {"firstError", "rc 13"}}}}}};
}
json result() {
  return {{"schema", "hotfixctl/install/1"},
          {"status", 6},
          {"cause", "application-running"},
          {"line", "it runs"},
          {"instance", {{"bundle", "/A/Q.app"}, {"rcpHome", "/A/Q.app/rcp"}}},
          {"versions", {{"package", "1.6"}, {"before", "1.5"}, {"after", "1.5"}}},
          {"keptRun", "/var/lib/hotfix/one"},
          {"began", "2026-11-22T11:35:02+00:00"},
          {"seconds", 7.9},
          {"phases",
           {{{"phase", "check-paths"}, {"at", 0}, {"seconds", 0}},
            {{"phase", "unheard-of"}, {"at", 0}, {"seconds", 1}},
            {{"phase", "recover"}, {"at", 1}, {"seconds", 6}}}}};
}

std::optional<Told> told(const json& document) {
  std::string reason;
  return toldBy(document.dump(), kModified, reason);
}
std::string refusal(const std::string& text) {
  std::string reason;
  EXPECT_FALSE(toldBy(text, kModified, reason).has_value()) << text.substr(0, 100);
  return reason;
}

TEST(ReportDocumentsTest, AStatusTellsItsInstancesAndTheEndOfTheLastRun) {
  proves("REPORT-2");
  const auto all = told(status());

  ASSERT_TRUE(all);
  EXPECT_EQ("", all->machine);
  EXPECT_EQ(1'795'347'362, all->at);
  ASSERT_THAT(all->instances, SizeIs(1));
  const ToldInstance& instance = all->instances[0];
  EXPECT_EQ("/A/Q.app", instance.place);
  EXPECT_EQ(InstanceState::needsAttention, instance.state);
  EXPECT_EQ("1.5", instance.version);
  ASSERT_THAT(instance.findings, SizeIs(1));
  EXPECT_EQ("left-over-item", instance.findings[0].name);
  EXPECT_EQ("some", instance.findings[0].text);
  EXPECT_EQ("none", instance.findings[0].remedy);
  ASSERT_TRUE(all->run);
  EXPECT_EQ("provisioning-failed", all->run->cause);
  EXPECT_EQ("rc 13", all->run->line);
  EXPECT_EQ(1'795'347'302, all->run->ended);
  EXPECT_EQ(std::nullopt, all->run->seconds);
  EXPECT_THAT(all->run->steps, IsEmpty());
}

TEST(ReportDocumentsTest, TheCauseComesBeforeTheFirstError) {
  json document = status();
  document["lastRun"]["run"]["cause"] = "the cause";

  EXPECT_EQ("the cause", told(document)->run->line);
}

TEST(ReportDocumentsTest, AStatusWithoutATraceIsAsOldAsItsFile) {
  json document = status();
  document["lastRun"] = {{"modified", nullptr}, {"ageSeconds", nullptr}, {"run", nullptr}};
  document["instances"][0]["bundle"] = nullptr;
  document["instances"][0]["hotfix"] = nullptr;
  document["instances"][0]["state"] = "no-hotfix";

  const auto all = told(document);

  ASSERT_TRUE(all);
  EXPECT_EQ(kModified, all->at);
  EXPECT_FALSE(all->run);
  EXPECT_EQ("/A/Q.app/rcp", all->instances.at(0).place);
  EXPECT_EQ(std::nullopt, all->instances.at(0).version);
  EXPECT_TRUE(all->instances.at(0).isVersionKnown());
}

TEST(ReportDocumentsTest, EachStateOfAnInstanceIsKnown) {
  json document = status();
  const std::vector<std::pair<std::string, bool>> states{{"hotfix-installed", true},
                                                         {"no-hotfix", true},
                                                         {"needs-attention", true},
                                                         {"no-instance", false},
                                                         {"not-readable", false}};
  for (std::size_t i = 0; i < states.size(); ++i) {
    document["instances"][0]["state"] = states[i].first;
    const auto all = told(document);
    ASSERT_TRUE(all) << states[i].first;
    EXPECT_EQ(static_cast<InstanceState>(i), all->instances.at(0).state);
    EXPECT_EQ(states[i].second, all->instances.at(0).isVersionKnown());
  }
}

TEST(ReportDocumentsTest, AResultTellsTheRunWithItsSteps) {
  proves("REPORT-2");
  const auto all = told(result());

  ASSERT_TRUE(all);
  EXPECT_EQ(1'795'347'309, all->at);
  ASSERT_THAT(all->instances, SizeIs(1));
  EXPECT_EQ("/A/Q.app", all->instances[0].place);
  EXPECT_EQ("1.5", all->instances[0].version);
  EXPECT_EQ(InstanceState::hotfixInstalled, all->instances[0].state);
  const ToldRun& run = *all->run;
  EXPECT_EQ("application-running", run.cause);
  EXPECT_EQ("it runs", run.line);
  EXPECT_EQ(7, run.seconds);
  EXPECT_EQ(1'795'347'309, run.ended);
  EXPECT_EQ("1.6", run.packageVersion);
  EXPECT_EQ("1.5", run.versionBefore);
  EXPECT_EQ("/var/lib/hotfix/one", run.keptRun);
  ASSERT_THAT(run.steps, SizeIs(2));
  EXPECT_EQ(StepKind::checkPaths, run.steps[0].kind);
  EXPECT_EQ(StepKind::recover, run.steps[1].kind);
  EXPECT_EQ(1, run.steps[1].at);
  EXPECT_EQ(6, run.steps[1].seconds);
}

TEST(ReportDocumentsTest, OfARunThatIsAtWorkNoVersionIsKnown) {
  json document = result();
  document["status"] = nullptr;
  EXPECT_THAT(told(document)->instances, IsEmpty());

  document["status"] = 8;
  document["instance"] = {{"bundle", nullptr}, {"rcpHome", nullptr}};
  EXPECT_THAT(told(document)->instances, IsEmpty());

  document["instance"]["rcpHome"] = "/A/rcp";
  document["versions"]["after"] = nullptr;
  ASSERT_THAT(told(document)->instances, SizeIs(1));
  EXPECT_EQ("/A/rcp", told(document)->instances[0].place);
  EXPECT_EQ(InstanceState::noHotfix, told(document)->instances[0].state);
}

TEST(ReportDocumentsTest, ANoteOfARollOutNamesItsHost) {
  proves("REPORT-2");
  const auto all = told({{"host", "mac1"},
                         {"cause", "application-running"},
                         {"message", "not this"},
                         {"changed", false},
                         {"answer", result()}});

  ASSERT_TRUE(all);
  EXPECT_EQ("mac1", all->machine);
  EXPECT_EQ("application-running", all->run->cause);
  EXPECT_EQ("it runs", all->run->line);
  EXPECT_EQ(7, all->run->seconds);
}

TEST(ReportDocumentsTest, WhereNothingWasBegunTheNoteHasThePlan) {
  proves("REPORT-2");
  const json plan = {{"schema", "hotfixctl/plan/1"},
                     {"instance", {{"bundle", "/A/Q.app"}, {"rcpHome", "/A/Q.app/rcp"}}},
                     {"versions", {{"package", "1.6"}, {"before", "1.6"}, {"after", "1.6"}}}};
  const auto all =
      told({{"host", "mac1"}, {"cause", "installed-already"}, {"message", ""}, {"answer", plan}});

  ASSERT_TRUE(all);
  EXPECT_EQ("installed-already", all->run->cause);
  EXPECT_EQ(std::nullopt, all->run->line);
  EXPECT_EQ(kModified, all->run->ended);
  EXPECT_EQ("1.6", all->instances.at(0).version);
  EXPECT_EQ("1.6", all->run->packageVersion);
  EXPECT_EQ("1.6", all->run->versionBefore);
}

TEST(ReportDocumentsTest, WhereNothingWasBroughtTheNoteHasTheStatus) {
  proves("REPORT-2");
  const auto all = told(
      {{"host", "mac1"}, {"cause", "installed-already"}, {"message", ""}, {"answer", status()}});

  ASSERT_TRUE(all);
  EXPECT_EQ("mac1", all->machine);
  EXPECT_EQ(1'795'347'362, all->at);
  EXPECT_EQ("1.5", all->instances.at(0).version);
  EXPECT_EQ("installed-already", all->run->cause);
  EXPECT_EQ(kModified, all->run->ended);
  EXPECT_EQ(std::nullopt, all->run->line);
}

TEST(ReportDocumentsTest, AHostThatWasNotReachedToTheEndHasAMessage) {
  const auto all = told({{"host", "mac1"},
                         {"cause", "not-begun"},
                         {"message", "the share is not mounted"},
                         {"answer", json::object()}});

  ASSERT_TRUE(all);
  EXPECT_EQ("not-begun", all->run->cause);
  EXPECT_EQ("the share is not mounted", all->run->line);
  EXPECT_THAT(all->instances, IsEmpty());
}

TEST(ReportDocumentsTest, AnythingElseIsRefusedWithAReason) {
  proves("REPORT-3");
  for (const char* text : {"", "{", "{}x", "\"\xff\"", "plain text"})
    EXPECT_EQ("is no JSON document", refusal(text));
  for (const char* text :
       {"{}", "[]", "1", "null", "\"hotfixctl/status/1\"", "{\"schema\":[]}",
        "{\"schema\":\"hotfixctl/plan/1\"}", "{\"schema\":\"hotfixctl/status/2\"}",
        "{\"host\":1,\"cause\":\"a\",\"answer\":{}}", "{\"host\":\"a\",\"cause\":1,\"answer\":{}}",
        "{\"host\":\"a\",\"cause\":\"a\",\"answer\":[]}"})
    EXPECT_EQ("is neither a status, a result, nor a roll-out's note of a host", refusal(text));
  for (const char* text :
       {"{\"schema\":\"hotfixctl/status/1\"}",
        "{\"schema\":\"hotfixctl/status/1\",\"instances\":{}}",
        "{\"schema\":\"hotfixctl/status/1\",\"instances\":[1]}",
        "{\"schema\":\"hotfixctl/status/1\",\"instances\":[{\"rcpHome\":\"/a\"}]}",
        "{\"schema\":\"hotfixctl/status/1\",\"instances\":[{\"rcpHome\":\"/a\",\"state\":\"x\"}]}",
        "{\"schema\":\"hotfixctl/status/1\",\"instances\":[{\"state\":\"no-hotfix\"}]}",
        "{\"schema\":\"hotfixctl/install/1\"}", "{\"schema\":\"hotfixctl/install/1\",\"cause\":1}",
        "{\"host\":\"a\",\"cause\":\"a\",\"answer\":{\"schema\":\"hotfixctl/install/1\"}}"})
    EXPECT_EQ("is not as its schema wants it", refusal(text));
}

TEST(ReportDocumentsTest, WrongTypesAndNumbersWithoutBoundsDoNoHarm) {
  proves("REPORT-5");
  json document = result();
  document["line"] = 1;
  document["versions"] = json::array();
  document["instance"] = "none";
  document["began"] = 5;
  document["seconds"] = 1e300;
  document["keptRun"] = json::object();
  document["phases"] = {1, {{"phase", 1}}, {{"phase", "recover"}, {"at", -5}, {"seconds", 1e300}}};

  const auto all = told(document);

  ASSERT_TRUE(all);
  EXPECT_EQ(kModified, all->at);
  EXPECT_EQ(std::nullopt, all->run->line);
  EXPECT_EQ(std::nullopt, all->run->ended);
  EXPECT_EQ(std::nullopt, all->run->keptRun);
  EXPECT_EQ(kMostSeconds, all->run->seconds);
  ASSERT_THAT(all->run->steps, SizeIs(1));
  EXPECT_EQ(0, all->run->steps[0].at);
  EXPECT_EQ(kMostSeconds, all->run->steps[0].seconds);
  document["phases"] = "none";
  EXPECT_THAT(told(document)->run->steps, IsEmpty());
}

TEST(ReportDocumentsTest, LongTextsAreCutBetweenLetters) {
  proves("REPORT-5");
  json document = result();
  document["line"] = std::string(kLongestText, 'a');
  EXPECT_EQ(std::string(kLongestText, 'a'), told(document)->run->line);
  document["line"] = std::string(kLongestText - 1, 'a') + "\u00e9\u00e9";
  EXPECT_EQ(std::string(kLongestText - 1, 'a') + "...", told(document)->run->line);
}

TEST(ReportDocumentsTest, WhatIsTooManyIsLeftOut) {
  proves("REPORT-5");
  json document = status();
  document["instances"] = json(200, document["instances"][0]);
  document["instances"][0]["findings"] = json(200, document["instances"][0]["findings"][0]);
  json long_ = result();
  long_["phases"] = json(1000, long_["phases"][0]);

  EXPECT_THAT(told(document)->instances, SizeIs(kMostInstances));
  EXPECT_THAT(told(document)->instances[0].findings, SizeIs(kMostFindings));
  EXPECT_THAT(told(long_)->run->steps, SizeIs(ctl::Run::kMostSteps));
}

TEST(ReportDocumentsTest, DepthAndManyKeysTakeBoundedTime) {
  proves("REPORT-5");
  const std::size_t depth = 200'000;
  const std::string deep = std::string(depth, '[') + std::string(depth, ']');
  const auto all = told(result());
  std::string reason;
  const std::string text = result().dump();
  const std::string nested = text.substr(0, text.size() - 1) + ",\"deep\":" + deep + "}";
  std::string keys = text.substr(0, text.size() - 1);
  for (int i = 0; i < 50'000; ++i) keys += ",\"k" + std::to_string(i) + "\":1";

  EXPECT_EQ(all->run->cause, toldBy(nested, kModified, reason)->run->cause);
  EXPECT_EQ(all->run->cause, toldBy(keys + "}", kModified, reason)->run->cause);
  EXPECT_EQ("is no JSON document", refusal(std::string(depth, '[')));
}

Run failedRun() {
  Run run;
  run.host = "mac1";
  run.rcpHome = "/A/Q.app/Contents/MacOS/rcp";
  run.seconds = 9;
  run.ending = Ending::provisioningFailed;
  run.packageVersion = "1.6";
  run.installedVersion = "1.5";
  run.steps = {{StepKind::provision, 0, 9}};
  for (int i = 0; i < 7; ++i)
    run.problems.push_back({LogLevel::error, "", "problem " + std::to_string(i), i});
  run.problemsLeftOut = 3;
  run.cause = run.problems[0];
  return run;
}

TEST(ReportDocumentsTest, ATraceTellsTheMachineAndTheFirstProblems) {
  proves("REPORT-2");
  const Told all = toldBy(failedRun(), "20261122T113502.045Z-Quillmere", kModified);

  EXPECT_EQ("mac1", all.machine);
  EXPECT_EQ(1'795'347'311, all.at);
  EXPECT_EQ("provisioning-failed", all.run->cause);
  EXPECT_EQ("problem 0", all.run->line);
  EXPECT_EQ(1'795'347'311, all.run->ended);
  EXPECT_EQ(9, all.run->seconds);
  EXPECT_EQ("1.6", all.run->packageVersion);
  EXPECT_EQ("1.5", all.run->versionBefore);
  EXPECT_THAT(all.run->steps, SizeIs(1));
  ASSERT_THAT(all.run->problems, SizeIs(kMostProblems));
  EXPECT_EQ("problem 4", all.run->problems[4].text);
  EXPECT_EQ(5u, all.run->problemsLeftOut);
  EXPECT_THAT(all.instances, IsEmpty());
}

TEST(ReportDocumentsTest, OnlyATraceOfAnInstallationTellsTheVersion) {
  ctl::Run run = failedRun();
  run.ending = Ending::installed;

  const Told all = toldBy(run, "anything", kModified);

  EXPECT_EQ(kModified, all.run->ended);
  ASSERT_THAT(all.instances, SizeIs(1));
  EXPECT_EQ("/A/Q.app", all.instances[0].place);
  EXPECT_EQ("1.6", all.instances[0].version);
}

}  // namespace
}  // namespace installer::ctl::report
