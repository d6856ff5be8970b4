#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "ctl/ControlTest.h"
#include "ctl/Endings.h"
#include "support/Judge.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

// The program's plan, and then the installer itself in the same place.
class PlanCommandTest : public ControlTest {
 protected:
  using Places = std::map<std::string, std::string>;

  std::vector<std::string> arguments() const { return {"plan", _package.folder, _destination}; }

  RunResult plan(const std::vector<std::string>& options = {}, const RunOptions& run = {}) {
    std::vector<std::string> all = arguments();
    all.insert(all.end(), options.begin(), options.end());
    return control(all, run);
  }

  json planned(const std::vector<std::string>& options = {}, const RunOptions& run = {}) {
    std::vector<std::string> all = {"--json"};
    all.insert(all.end(), options.begin(), options.end());
    _result = plan(all, run);
    return json::parse(_result.out, nullptr, false);
  }

  // The kinds, modes and owners of what is at the places that the plan names, from the disk.
  void compareWithDisk(const json& told) {
    for (const json& change : told["changes"]) {
      const std::string path = change["path"];
      const json& after = change["after"];
      EXPECT_EQ(_sandbox.exists(path), !after.is_null()) << path;
      if (after.is_null() || !_sandbox.exists(path)) continue;
      const Ownership real = _sandbox.ownership(path);
      EXPECT_EQ(after["owner"], real.owner) << path;
      EXPECT_EQ(after["group"], real.group) << path;
      if (after["kind"] != "link") {
        EXPECT_EQ(std::stoul(after["mode"].get<std::string>(), nullptr, 8), real.mode) << path;
      }
    }
  }

  void compareChildren(const json& told) {
    std::vector<std::vector<std::string>> started;
    for (const ChildRecord& child : _sandbox.children()) started.push_back(child.arguments);
    std::vector<std::vector<std::string>> expected;
    for (const json& child : told["children"])
      if (child["refusal"].is_null()) expected.push_back(child["arguments"]);
    EXPECT_EQ(expected, started);
  }

  // Everything that a run could change, by its path.
  Places places() const {
    Places all;
    for (const char* folder : {"/Applications", "/Library", "/Users", "/Volumes", "/tmp"})
      for (const auto& [name, item] : _sandbox.tree(folder)) all[std::string(folder) + name] = item;
    return all;
  }

  // What has changed is what was told, but for what is written again as it was.
  static void compareChanges(const json& told, const Places& before, const Places& after) {
    std::set<std::string> foreseen;
    for (const json& change : told["changes"])
      if (change["change"] != "rewritten") foreseen.insert(change["path"].get<std::string>());
    std::set<std::string> changed;
    for (const auto& [path, item] : before)
      if (!after.contains(path) || after.at(path) != item) changed.insert(path);
    for (const auto& [path, item] : after)
      if (!before.contains(path)) changed.insert(path);
    EXPECT_EQ(foreseen, changed);
  }

  // The run comes out as the plan that was made before it.
  void proveTruth() {
    awaitRoomInTheMinute();
    const Places before = places();
    const json told = planned();
    EXPECT_EQ(places(), before);
    EXPECT_THAT(_sandbox.children(), IsEmpty());

    const RunResult run = install();

    EXPECT_EQ(told["status"], run.status);
    EXPECT_EQ(told["output"], run.out);
    EXPECT_EQ(told["error"]["code"], errorRecord().code);
    compareWithDisk(told);
    compareChanges(told, before, places());
    compareChildren(told);
  }

  // Puts a record there that no run can replace.
  void keepRecordWith(const std::string& code) {
    _sandbox.writeFile(kPasteboard, "<plist version=\"1.0\"><dict><key>ERROR_CODE</key><integer>" +
                                        code + "</integer></dict></plist>");
    _sandbox.makeReadOnly("/tmp");
  }

  static void judgeBySchema(const std::string& answer) {
    const test::TemporaryFolder folder;
    folder.makeFile("answer.json", answer);
    const auto verdict = test::askJudge(folder.path(),
                                        "python3 -c 'import json, jsonschema\n"
                                        "schema = json.load(open(\"" HOTFIX_SOURCE_DIR
                                        "/src/ctl/schema/plan-1.schema.json\"))\n"
                                        "jsonschema.Draft7Validator.check_schema(schema)\n"
                                        "jsonschema.Draft7Validator(schema).validate("
                                        "json.load(open(\"answer.json\")))'");
    EXPECT_EQ(verdict.status, 0) << verdict.output;
  }

  RunResult _result;
};

TEST_F(PlanCommandTest, AnInstallationComesOutAsPlanned) {
  proves("PLAN-1");
  proveTruth();
  EXPECT_EQ(_result.status, 0);
  EXPECT_EQ(_result.err, "");
}

TEST_F(PlanCommandTest, ADoubledUpgradeComesOutAsPlanned) {
  proves("PLAN-1");
  recordHotfix("1.4");
  _sandbox.remove(_instance.data() + "/.config");
  proveTruth();
}

TEST_F(PlanCommandTest, ARefusalComesOutAsPlanned) {
  proves("PLAN-1");
  recordHotfix("9");
  proveTruth();
  EXPECT_EQ(_result.status, 1);
}

TEST_F(PlanCommandTest, AReadOnlyInstanceComesOutAsPlanned) {
  proves("PLAN-1");
  _sandbox.makeReadOnly("/Applications");
  proveTruth();
  EXPECT_EQ(_result.status, 1);
}

TEST_F(PlanCommandTest, AMissingLauncherComesOutAsPlanned) {
  proves("PLAN-1");
  _sandbox.remove(_instance.launcher());
  proveTruth();
}

TEST_F(PlanCommandTest, TheAssumedAnswerDecides) {
  proves("PLAN-2");
  EXPECT_EQ(plan({"--assume", "2"}).status, 0);
  EXPECT_EQ(plan({"--assume", "13"}).status, 1);
}

TEST_F(PlanCommandTest, TheTextTellsTargetChecksChangesChildrenAndStatus) {
  proves("PLAN-3");
  const RunResult result = plan({"--diff", "--all"});

  EXPECT_THAT(result.out, HasSubstr("Instance      /Applications/Quillmere.app\n"));
  EXPECT_THAT(result.out, HasSubstr("allows several instances"));
  EXPECT_THAT(result.out, HasSubstr("  version     passed; package 1.5; installed none\n"));
  EXPECT_THAT(result.out, HasSubstr("+ " + _instance.deploy("install.update.xml") + " (file "));
  EXPECT_THAT(result.out, HasSubstr("    +++ " + _instance.info() + "\n"));
  EXPECT_THAT(result.out, HasSubstr(_instance.launcher() + " \"-rcpLauncherWait\""));
  EXPECT_THAT(result.out, HasSubstr("Exit status   0: the hotfix would be installed\n"));
}

TEST_F(PlanCommandTest, AnErrorIsToldInWords) {
  proves("PLAN-3");
  _sandbox.remove(_instance.deploy("install.xml"));
  const RunResult result = plan();

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("  instance    FAILED; "));
  EXPECT_THAT(result.out, HasSubstr("  code 8      no instance is installed; /Applications; "));
  EXPECT_THAT(result.out, HasSubstr("  running     not reached"));
}

TEST_F(PlanCommandTest, TheDataFolderIsTakenInTheInstallersWords) {
  EXPECT_EQ(planned({"-rcpdata", "/data"})["rcpData"], "/data");
  EXPECT_EQ(planned({"--rcpdata", "/data"})["rcpData"], "/data");
  EXPECT_EQ(planned()["rcpData"], nullptr);
}

// Whoever may not look everywhere gets what can be told, and is told that it is not all.
TEST_F(PlanCommandTest, AUserWithoutRightsIsToldSo) {
  proves("PLAN-4");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  RunOptions alice;
  alice.user = CliSandbox::kAlice;

  EXPECT_THAT(planned({}, alice)["unknown"], ElementsAre("the processes of other users"));
  EXPECT_EQ(_result.status, 2) << "it is root's process that is closed to her";
  _package.set("SKIPRUNNINGCHECK", "true");
  writePreferences();
  _sandbox.writeFile(kMarker, "closed", 0600);
  EXPECT_THAT(planned({"--diff"}, alice)["unknown"], IsEmpty());
  EXPECT_EQ(_result.status, 0) << "what is only shown decides nothing";

  _sandbox.writeFile(_instance.customization(), "a=1\n", 0600);
  const json closed = planned({}, alice);
  EXPECT_EQ(_result.status, 2);
  EXPECT_THAT(closed["unknown"], Contains(_instance.customization()));
}

TEST_F(PlanCommandTest, TheSchemaKnowsTheWholeAnswer) {
  for (const char* version : {"1.4", "9"}) {
    recordHotfix(version);
    judgeBySchema(plan({"--json", "--diff"}).out);
  }
}

TEST_F(PlanCommandTest, WhatIsInTheWayIsToldAsARunTellsIt) {
  recordHotfix("9");

  const json error = planned()["error"];

  const auto& ending = ctl::descriptionOf(ctl::Ending::higherHotfixInstalled);
  EXPECT_EQ(error["code"], static_cast<int>(ending.code));
  EXPECT_EQ(error["cause"], ending.name);
  EXPECT_EQ(error["meaning"], ending.meaning);
  EXPECT_EQ(error["remedy"], ending.remedy);
}

// It stays for whoever reads it after the run, too.
TEST_F(PlanCommandTest, ARecordThatCannotBeReplacedIsToldAsItStands) {
  keepRecordWith("99");

  const json error = planned()["error"];
  EXPECT_EQ(error["code"], 99);
  EXPECT_EQ(error["cause"], nullptr);
  judgeBySchema(_result.out);
}

TEST_F(PlanCommandTest, ANumberThatCanBeNoCodeIsNone) {
  keepRecordWith("1099511627782");  // 6 above a power of two

  EXPECT_EQ(planned()["error"]["code"], 0);
}

TEST_F(PlanCommandTest, BadArgumentsAreRefused) {
  EXPECT_EQ(control({"plan"}).status, 64);
  EXPECT_EQ(control({"plan", "a", "b", "c"}).status, 64);
  EXPECT_EQ(control({"plan", "a", "b", "--assume", "x"}).status, 64);
  EXPECT_EQ(control({"plan", "/none", "/none"}).status, 1);
}

}  // namespace
}  // namespace installer::cli
