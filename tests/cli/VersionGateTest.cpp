#include <gmock/gmock.h>

#include <algorithm>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

struct Versions {
  const char* name;
  std::string package;
  std::string installed;
  bool refused;
};
void PrintTo(const Versions& versions, std::ostream* stream) {
  *stream << versions.name;
}

// Versions are compared as plain texts.
class VersionsTest : public InstallerTest, public ::testing::WithParamInterface<Versions> {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    _package.set("version", GetParam().package);
    writePreferences();
    recordHotfix(GetParam().installed);
  }
};

TEST_P(VersionsTest, DecideWhetherThePackageIsRefused) {
  proves("VERSION-1");
  const RunResult result = install();

  EXPECT_EQ(GetParam().refused ? 1 : 0, result.status);
  EXPECT_EQ(GetParam().refused ? 7 : 0, errorRecord().code);
  EXPECT_EQ(GetParam().refused ? GetParam().installed : GetParam().package,
            recorded("hotfixVersion"));
}

TEST_P(VersionsTest, AreLoggedPackageFirst) {
  proves("VERSION-3");
  (void)install();  // what it leaves is looked at

  const auto texts = _sandbox.texts();
  const auto current =
      std::find(texts.begin(), texts.end(), "Current hotfix version: " + GetParam().package + ".");
  ASSERT_NE(texts.end(), current);
  EXPECT_EQ("Installed hotfix version: " + GetParam().installed + ".", *(current + 1));
}

TEST_P(VersionsTest, AnyInstalledOneThatIsNotRefusedIsRemovedFirst) {
  proves("VERSION-6");
  (void)install();  // what it leaves is looked at

  const bool removed =
      ::testing::Value(_sandbox.texts(), Contains("Found another hot fix, uninstall it before "
                                                  "installing the new hot fix"));
  EXPECT_EQ(!GetParam().refused, removed);
}

INSTANTIATE_TEST_SUITE_P(Pairs, VersionsTest,
                         ::testing::Values(Versions{"Equal", "1.5", "1.5", false},
                                           Versions{"TenOverNine", "1.10", "1.9", true},
                                           Versions{"TwoOverTen", "2", "10", false},
                                           Versions{"Prefix", "1.5", "1.5.1", true},
                                           Versions{"Longer", "1.5.1", "1.5", false},
                                           Versions{"Lower", "1.4", "1.5", true},
                                           Versions{"Higher", "1.6", "1.5", false},
                                           Versions{"CapitalBeforeSmall", "1.A", "1.a", true},
                                           Versions{"SmallAfterCapital", "1.a", "1.A", false},
                                           Versions{"DigitBeforeLetter", "1", "a", true},
                                           Versions{"AccentAfterLetter", "\xC3\xA9", "z", false},
                                           Versions{"LetterBeforeAccent", "z", "\xC3\xA9", true}),
                         CaseName());

class VersionGateTest : public InstallerTest {};

TEST_F(VersionGateTest, RefusalIsLoggedAsAnError) {
  proves("VERSION-3");
  recordHotfix("1.6");

  ASSERT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), Contains("Higher version hotfix has been installed."));
  EXPECT_TRUE(_sandbox.exists(kMarker));
}

TEST_F(VersionGateTest, AbsentInstalledVersionPasses) {
  proves("VERSION-4");
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Installed hotfix version: (null)."));
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Found another hot fix, uninstall it before "
                                             "installing the new hot fix")));
}

TEST_F(VersionGateTest, AbsentPackageVersionPassesAndTheOldOneIsRemoved) {
  proves("VERSION-4");
  recordHotfix("1.6");
  _package.unset("version");
  writePreferences();

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Current hotfix version: (null)."));
  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
}

TEST_F(VersionGateTest, AbsentPackageVersionRecordsNone) {
  proves("INSTALL-11");
  _package.unset("version");
  writePreferences();

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Begin to update new hotfix version."));
  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
}

TEST_F(VersionGateTest, VersionThatIsNoTextCountsAsAbsent) {
  proves("VERSION-4");
  recordHotfix("1.6");
  _package.set("version", ListValue::integer(1));
  writePreferences();

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Current hotfix version: (null)."));
}

TEST_F(VersionGateTest, InstalledVersionThatIsNoTextCountsAsAbsent) {
  proves("VERSION-4");
  writeInfo({{"hotfixVersion", ListValue::integer(9)}});

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Installed hotfix version: (null)."));
}

TEST_F(VersionGateTest, EmptyInstalledVersionIsAVersion) {
  proves("VERSION-6");
  recordHotfix("");

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Installed hotfix version: ."));
  EXPECT_THAT(_sandbox.texts(), Contains("Found another hot fix, uninstall it before "
                                         "installing the new hot fix"));
}

TEST_F(VersionGateTest, BinaryInstallInfoIsReadAndWrittenAsXml) {
  proves("INFO-1");
  _sandbox.writeFile(
      _instance.info(),
      binaryList(ListValue::dictionary({{"hotfixVersion", ListValue::string("1.2")},
                                        {"count", ListValue::integer(7)},
                                        {"flag", ListValue::boolean(true)},
                                        {"name", ListValue::string("caf\xC3\xA9")}})));

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Installed hotfix version: 1.2."));
  const ListValue info = listAt(_instance.info());
  EXPECT_EQ(ListValue::integer(7), *info.find("count"));
  EXPECT_EQ(ListValue::boolean(true), *info.find("flag"));
  EXPECT_EQ("caf\xC3\xA9", info.stringAt("name"));
}

// --- Policy --------------------------------------------------------------------------------------

struct Policy {
  const char* name;
  std::optional<ListValue> value;
  bool skips;
};
void PrintTo(const Policy& policy, std::ostream* stream) {
  *stream << policy.name;
}

class PolicyTest : public InstallerTest, public ::testing::WithParamInterface<Policy> {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    if (GetParam().value) _package.set("SKIPRUNNINGCHECK", *GetParam().value);
    writePreferences();
  }
};

TEST_P(PolicyTest, DecidesWhetherRunningIsChecked) {
  proves("CHECK-9");
  const std::string program = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(program);
  RunOptions options;
  options.background = {{program, "--idle"}};

  const RunResult result = install(options);

  EXPECT_EQ(GetParam().skips ? 0 : 1, result.status);
  EXPECT_EQ(GetParam().skips ? 0 : 6, errorRecord().code);
  EXPECT_EQ(!GetParam().skips,
            ::testing::Value(_sandbox.texts(), Contains("Check whether platform is running.")));
}

TEST_P(PolicyTest, IsRecordedInTheInstance) {
  proves("INSTALL-12");
  ASSERT_EQ(0, install().status);

  EXPECT_EQ(GetParam().skips ? "true" : "false", recorded("SKIPRUNNINGCHECK"));
}

INSTANTIATE_TEST_SUITE_P(
    Values, PolicyTest,
    ::testing::Values(Policy{"True", ListValue::string("true"), true},
                      Policy{"Absent", std::nullopt, false},
                      Policy{"Capitalised", ListValue::string("True"), false},
                      Policy{"Capitals", ListValue::string("TRUE"), false},
                      Policy{"Yes", ListValue::string("yes"), false},
                      Policy{"One", ListValue::string("1"), false},
                      Policy{"False", ListValue::string("false"), false},
                      Policy{"Empty", ListValue::string(""), false},
                      Policy{"TrailingBlank", ListValue::string("true "), false},
                      Policy{"LeadingBlank", ListValue::string(" true"), false}),
    CaseName());

TEST_F(VersionGateTest, SkippedRunningCheckListsNoProcesses) {
  proves("CHECK-9");
  _package.set("SKIPRUNNINGCHECK", "true");
  writePreferences();

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Not(Contains(::testing::StartsWith(">>>> "))));
}

}  // namespace
}  // namespace installer::cli
