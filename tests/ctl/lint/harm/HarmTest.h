#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ctl/ControlTest.h"
#include "ctl/lint/LintCases.h"

namespace installer::cli {

using ctl::lint::test::LintCase;
using ctl::lint::test::lintCases;
using ctl::lint::test::LintWorld;

class HarmTest;

// One case of a rule, what the machine has beside the package, and what is wrong after the run.
struct Harm {
  std::string title;
  std::function<void(HarmTest&)> judge;
  std::function<void(HarmTest&)> prepare = {};
};

class HarmTest : public ControlTest, public ::testing::WithParamInterface<Harm> {
 public:
  CliSandbox& box() { return _sandbox; }
  const Instance& instance() const { return _instance; }
  const RunResult& result() const { return _result; }
  LintWorld& world() { return *_world; }
  RunOptions& options() { return _options; }
  std::string& destination() { return _destination; }

  using InstallerTest::buildInstance;
  using InstallerTest::errorRecord;
  using InstallerTest::listAt;
  using InstallerTest::recorded;
  using InstallerTest::recordHotfix;
  using InstallerTest::registerProduct;

  std::string settings() const { return _sandbox.readFile(_instance.customization()).value_or(""); }
  std::string deployed(const std::string& name) const {
    return _sandbox.readFile(_instance.deploy(name)).value_or("");
  }
  std::string version() const { return recorded("hotfixVersion").value_or("none"); }
  std::string versionIn(const Instance& other) const {
    return listAt(other.info()).stringAt("hotfixVersion").value_or("none");
  }
  // What the launcher of the hotfix's run is told about update sites.
  std::string site() const {
    for (const ChildRecord& child : _sandbox.children("rcplauncher"))
      for (const std::string& argument : child.arguments)
        if (argument.starts_with("-DprovUpdateSiteListOverride=")) return argument;
    return "none";
  }

 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    _world.emplace(_sandbox.host(""));
  }

  void spoil() {
    const auto& cases = lintCases();
    const auto found = std::find_if(cases.begin(), cases.end(), [](const LintCase& one) {
      return one.title() == GetParam().title;
    });
    ASSERT_NE(cases.end(), found) << GetParam().title;
    found->spoil(*_world);
  }

  std::optional<LintWorld> _world;
  RunOptions _options;
  RunResult _result;
};

inline void PrintTo(const Harm& harm, std::ostream* stream) {
  *stream << harm.title;
}

// --- Judges --------------------------------------------------------------------------------------

// The run succeeds and says nothing to the user.
inline void expectSilence(HarmTest& test) {
  EXPECT_EQ(0, test.result().status);
  EXPECT_EQ(0, test.errorRecord().code);
}

// A judge that expects silence, too.
inline std::function<void(HarmTest&)> silently(std::function<void(HarmTest&)> judge) {
  return [judge](HarmTest& test) {
    expectSilence(test);
    judge(test);
  };
}

inline std::function<void(HarmTest&)> refusedWith(int code) {
  return [code](HarmTest& test) {
    EXPECT_EQ(1, test.result().status);
    EXPECT_EQ(code, test.errorRecord().code);
  };
}

inline std::function<void(HarmTest&)> installed(const std::string& version) {
  return [version](HarmTest& test) { test.recordHotfix(version); };
}

// The settings afterwards.
inline std::function<void(HarmTest&)> settingsAre(const std::string& text) {
  return silently([text](HarmTest& test) { EXPECT_EQ("a=1\nb=2\n" + text, test.settings()); });
}

// What the file of that name in the instance's deploy folder holds afterwards.
inline std::function<void(HarmTest&)> deployedHolds(const std::string& name,
                                                    const std::string& text) {
  return silently(
      [=](HarmTest& test) { EXPECT_THAT(test.deployed(name), ::testing::HasSubstr(text)); });
}
inline std::function<void(HarmTest&)> deployedLacks(const std::string& name,
                                                    const std::string& text) {
  return silently([=](HarmTest& test) {
    EXPECT_NE("", test.deployed(name));
    EXPECT_THAT(test.deployed(name), ::testing::Not(::testing::HasSubstr(text)));
  });
}

inline const auto kNothingRecorded =
    silently([](HarmTest& test) { EXPECT_EQ("none", test.version()); });
inline const auto kSettingsNotMerged = settingsAre("");
inline const auto kNoKeyStore = silently(
    [](HarmTest& test) { EXPECT_FALSE(test.box().exists(test.instance().deploy(".keystore"))); });

// Another application, of another name.
inline const Instance kOtherName{"/Applications/Other.app"};

// --- By subject ----------------------------------------------------------------------------------

std::vector<Harm> descriptionHarms();
std::vector<Harm> placesHarms();
std::vector<Harm> manifestsHarms();
std::vector<Harm> settingsHarms();
std::vector<Harm> filesHarms();
std::vector<Harm> surroundingsHarms();

}  // namespace installer::cli
