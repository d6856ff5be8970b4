// The command as it is started.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "ctl/ControlTest.h"
#include "ctl/Schema.h"
#include "ctl/lint/LintWorld.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ctl::lint::test::LintWorld;
using Json = nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class LintCommandTest : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    _world.emplace(_sandbox.host(""));
  }

  RunResult lint(std::vector<std::string> arguments, const RunOptions& options = {}) {
    arguments.insert(arguments.begin(), "lint");
    return control(arguments, options);
  }

  const std::string _path = "/Volumes/HF/mac/Fix.pkg";
  std::optional<LintWorld> _world;
};

TEST_F(LintCommandTest, APackageAsItShouldBeEndsWithZero) {
  proves("LINT-1");
  const RunResult result = lint({_path});

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("0 errors, 0 warnings, 0 notes\n", result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(LintCommandTest, NotesEndWithZeroAndAreTold) {
  proves("LINT-1");
  _world->text("copyright", "somebody");

  const RunResult result = lint({_path});

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, HasSubstr("[HF111]"));
}

TEST_F(LintCommandTest, WarningsAndErrorsEndWithOne) {
  proves("LINT-1");
  _world->text("SKIPRUNNINGCHECK", "True");
  EXPECT_EQ(1, lint({_path}).status);

  _world->unset("SKIPRUNNINGCHECK").unset("version");
  const RunResult result = lint({_path});

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out, HasSubstr(_path + "/Contents/Resources/hotfix.plist: error: "));
  EXPECT_EQ("", result.err);
}

TEST_F(LintCommandTest, WhatCannotBeLookedAtEndsWithTwoAndOneLine) {
  proves("LINT-2");
  _world->write("/file", "");
  _world->makePipe("/pipe");
  for (const char* place : {"/none", "/file", "/pipe"}) {
    const RunResult result = lint({place});
    EXPECT_EQ(2, result.status) << place;
    EXPECT_EQ("", result.out);
    EXPECT_THAT(result.err, StartsWith(std::string("hotfixctl: ") + place + ": "));
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n'));
  }
  EXPECT_EQ(2, lint({_path, "--instance", "/none"}).status);
  EXPECT_EQ(2, lint({_path, "--older", "/none"}).status);
}

TEST_F(LintCommandTest, APackageThatIsKeptFromTheCallerEndsWithTwo) {
  proves("LINT-2");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs another user";
  _sandbox.setMode(_path, 0700);
  RunOptions options;
  options.user = CliSandbox::kAlice;

  const RunResult result = lint({_path}, options);

  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, HasSubstr("Permission denied"));
}

TEST_F(LintCommandTest, APartThatIsKeptFromTheCallerEndsWithTwo) {
  proves("LINT-2");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs another user";
  RunOptions options;
  options.user = CliSandbox::kAlice;
  _world->makeFolder(LintWorld::extras("deep"));
  for (const std::string& part :
       {LintWorld::deploy(""), LintWorld::deploy("install.hotfix.xml"),
        LintWorld::deploy("uninstall.hotfix.xml"), LintWorld::deploy("plugin_customization.ini"),
        LintWorld::deploy("extras"), LintWorld::extras("deep"), _path + "/Contents/Info.plist"}) {
    _sandbox.setMode(part, 0);

    const RunResult result = lint({_path}, options);

    EXPECT_EQ(2, result.status) << part;
    EXPECT_EQ("", result.out);
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
    EXPECT_EQ(0, lint({_path}).status) << "root can look";
    _sandbox.setMode(part, 0755);
  }
}

TEST_F(LintCommandTest, SoDoesAPartOfTheInstanceOrOfTheOlderPackage) {
  proves("LINT-2");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs another user";
  recordHotfix("1.4");
  RunOptions options;
  options.user = CliSandbox::kAlice;
  const std::string older = "/Volumes/Old/mac/deploy/uninstall.hotfix.xml";
  for (const std::string& part : {_instance.info(), LintWorld::home("deploy"), older}) {
    _sandbox.setMode(part, 0);

    EXPECT_EQ(2,
              lint({_path, "--instance", LintWorld::kBundle, "--older", LintWorld::kOlder}, options)
                  .status)
        << part;
    _sandbox.setMode(part, 0755);
  }
}

TEST_F(LintCommandTest, InstanceAndOlderPackageAreLookedAt) {
  proves("LINT-3");
  recordHotfix("1.6");
  _world->text("version", "1.3");

  const RunResult result =
      lint({_path, "--instance", LintWorld::kBundle, "--older", LintWorld::kOlder});

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out, HasSubstr("[HF805]"));
  EXPECT_THAT(result.out, HasSubstr("[HF901]"));
}

TEST_F(LintCommandTest, AnInstanceIsKnownByAnyOfItsPaths) {
  proves("LINT-3");
  RunOptions inside;
  inside.directory = LintWorld::kBundle;
  const RunResult whole = lint({_path, "--instance", LintWorld::kBundle});

  EXPECT_THAT(whole.out, ::testing::Not(HasSubstr("[HF803]")));
  EXPECT_EQ(whole.out, lint({_path, "--instance", "."}, inside).out);
  EXPECT_EQ(whole.out, lint({_path, "--instance", "./"}, inside).out);
  EXPECT_EQ(whole.out, lint({_path, "--instance", LintWorld::kHome}).out);
}

TEST_F(LintCommandTest, TheWholePathOfAPackageCounts) {
  _world->move("/Volumes/HF", "/Volumes/A%B");
  RunOptions options;
  options.directory = "/Volumes/A%B/mac";

  EXPECT_THAT(lint({"Fix.pkg"}, options).out, HasSubstr("[HF801]"));
}

TEST_F(LintCommandTest, DisabledRulesDoNotCount) {
  proves("LINT-4");
  _world->unset("version").text("SKIPRUNNINGCHECK", "True");

  EXPECT_EQ(1, lint({_path, "--disable", "HF108"}).status);
  EXPECT_EQ(0, lint({_path, "--disable", "HF108,HF115"}).status);
  EXPECT_EQ(0, lint({_path, "--disable", "HF108", "--disable", "HF115"}).status);
}

TEST_F(LintCommandTest, UnknownRulesAreRefusedWithTheNearestOne) {
  proves("LINT-4");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{_path, "--disable", "HF18"}, {"--explain", "HF18"}}) {
    const RunResult result = lint(arguments);
    EXPECT_EQ(64, result.status);
    EXPECT_THAT(result.err, StartsWith("hotfixctl: there is no rule \"HF18\"; did you mean \"HF"));
  }
  EXPECT_EQ(64, lint({}).status);
}

TEST_F(LintCommandTest, WhatWouldBePassedOverIsRefused) {
  proves("LINT-10");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{_path, "--list"},
                                             {"--list", "--sarif"},
                                             {"--list", "--explain", "HF101"},
                                             {"--list", "--older", _path},
                                             {"--list", "--instance", LintWorld::kBundle},
                                             {"--list", "--disable", "HF101"},
                                             {_path, "--explain", "HF101"},
                                             {"--explain", "HF101", "--json"},
                                             {"--explain", "HF101", "--sarif"},
                                             {_path, "--json", "--sarif"},
                                             {_path, "--instance", ""},
                                             {_path, "--older", ""},
                                             {""}}) {
    const RunResult result = lint(arguments);
    EXPECT_EQ(64, result.status) << ::testing::PrintToString(arguments);
    EXPECT_EQ("", result.out);
    EXPECT_THAT(result.err, StartsWith("hotfixctl: lint: "));
  }
}

TEST_F(LintCommandTest, APathInBracketsIsAPath) {
  _world->move(_path, "/Volumes/HF/mac/[Fix].pkg");
  RunOptions options;
  options.directory = "/Volumes/HF/mac";

  EXPECT_EQ(0, lint({"[Fix].pkg"}, options).status);
}

TEST_F(LintCommandTest, AMissingOlderPackageIsToldBeforeAnyFinding) {
  proves("LINT-2");
  _world->remove(_path + "/Contents/Resources/hotfix.plist");

  EXPECT_EQ(2, lint({_path, "--older", "/none"}).status);
}

TEST_F(LintCommandTest, JsonIsOneDocument) {
  proves("LINT-5");
  _world->unset("version");

  const RunResult result = lint({"--json", _path});

  EXPECT_EQ(1, result.status);
  const Json json = ctl::test::judged(result.out, "lint-1");
  EXPECT_EQ("hotfixctl/lint/1", json["schema"]);
  EXPECT_EQ("HF108", json["findings"][0]["rule"]);
}

TEST_F(LintCommandTest, SarifIsOneDocument) {
  proves("LINT-5");
  _world->unset("version");

  const RunResult result = lint({"--sarif", _path});

  EXPECT_EQ(1, result.status);
  const Json json = Json::parse(result.out);
  EXPECT_EQ("2.1.0", json["version"]);
  EXPECT_EQ("HF108", json["runs"][0]["results"][0]["ruleId"]);
}

TEST_F(LintCommandTest, RulesAreListedAndExplainedWithoutAPackage) {
  proves("LINT-6");
  EXPECT_THAT(lint({"--list"}).out, StartsWith("HF101  error "));
  EXPECT_EQ("hotfixctl/lint-rules/1",
            ctl::test::judged(lint({"--list", "--json"}).out, "lint-rules-1")["schema"]);
  const RunResult result = lint({"--explain", "HF108"});
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, StartsWith("HF108 (error)\nversion is missing.\n\n"));
}

TEST_F(LintCommandTest, WhatStaysOfOlderExtrasIsToldOnceForAFolder) {
  const std::string older = "/Volumes/Old/mac/deploy/extras/";
  for (const char* path : {"fonts/kept.ttf", "fonts/old.ttf", "gone/a", "gone/deep/b"})
    _world->write(older + path, "old");
  _world->write(LintWorld::extras("fonts/kept.ttf"), "new");

  const std::string told = lint({_path, "--older", LintWorld::kOlder}).out;

  EXPECT_THAT(told, HasSubstr("\"fonts/old.ttf\" of the older package's extras stays."));
  EXPECT_THAT(told, HasSubstr("\"gone\" of the older package's extras stays."));
  EXPECT_THAT(told, Not(AnyOf(HasSubstr("kept.ttf"), HasSubstr("gone/"), HasSubstr("\"fonts\""))));
}

TEST_F(LintCommandTest, NothingIsChangedOrLoggedOrStarted) {
  proves("LINT-7");
  _world->unset("version");
  const auto volumes = _sandbox.tree("/Volumes");
  const auto applications = _sandbox.tree("/Applications");
  const auto temporary = _sandbox.tree("/tmp");
  RunOptions options;
  options.systemLog = true;

  const RunResult result =
      lint({_path, "--instance", LintWorld::kBundle, "--older", LintWorld::kOlder}, options);

  EXPECT_EQ(1, result.status);
  EXPECT_EQ(volumes, _sandbox.tree("/Volumes"));
  EXPECT_EQ(applications, _sandbox.tree("/Applications"));
  EXPECT_EQ(temporary, _sandbox.tree("/tmp"));
  EXPECT_THAT(result.systemLog, IsEmpty());
  EXPECT_THAT(_sandbox.children(), IsEmpty());
}

}  // namespace
}  // namespace installer::cli
