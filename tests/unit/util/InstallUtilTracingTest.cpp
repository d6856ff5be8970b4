#include <fcntl.h>
#include <gmock/gmock.h>

#include "hotfix/util/InstallUtil.h"
#include "platform/Log.h"
#include "support/FakePreferences.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class InstallUtilTracingTest : public ::testing::Test {
 protected:
  InstallUtilTracingTest() {
    _sandbox.users().variables["USER"] = "alice";
    _sandbox.users().userList = {{"alice", 501, 20, _sandbox.path("Users/alice")}};
  }

  void writePreference(const std::string& domain, const PropertyList::Dictionary& values) {
    _sandbox.writePlist("Users/alice/Library/Preferences/" + domain + ".plist", values);
  }
  std::string trace() const { return _sandbox.read(Platform::current().paths.traceFile); }
  static bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

  Sandbox _sandbox;
};

TEST_F(InstallUtilTracingTest, TracesAreWrittenWhateverThePreferenceSays) {
  EXPECT_TRUE(InstallUtil::shouldWriteTraces());

  writePreference("com.kiv.rcp.install.mac", {{"com.kiv.rcp.install.mac.traceEnable", false}});

  EXPECT_TRUE(InstallUtil::shouldWriteTraces());
}

TEST_F(InstallUtilTracingTest, PreferencesAreAskedForOnceEach) {
  FakePreferences preferences;
  _sandbox.platform().preferences = &preferences;

  (void)InstallUtil::shouldWriteTraces();  // the switch is looked at
  (void)InstallUtil::getCurrentLocale();   // the switch is looked at

  EXPECT_THAT(preferences.asked, ElementsAre("com.kiv.rcp.install.mac", ".GlobalPreferences"));
}

TEST_F(InstallUtilTracingTest, PreferenceIsReadAsTheConsoleUserAndTheUserIsRestored) {
  proves("LOG-5", "USER-5");
  _sandbox.users().effectiveUser = 0;

  (void)InstallUtil::shouldWriteTraces();  // the switch is looked at

  EXPECT_THAT(_sandbox.users().switches, ElementsAre(501, 0));
}

TEST_F(InstallUtilTracingTest, TraceFileMirrorsTheLogUntilItIsClosed) {
  proves("LOG-7");
  _sandbox.write(Platform::current().paths.traceFile, "of an earlier run\n");

  const int descriptor = InstallUtil::openTraceFile();
  log(LogLevel::info, "inside");
  InstallUtil::closeTraceFile(descriptor);
  log(LogLevel::info, "behind");

  EXPECT_THAT(trace(), EndsWith("<Info>: inside\n"));
  EXPECT_THAT(trace(), Not(StartsWith("of an earlier run")));
  EXPECT_FALSE(isOpen(descriptor));
}

TEST_F(InstallUtilTracingTest, FileOfOnesOwnMirrorsTheLogBesideTheTraceFile) {
  proves("LOG-9");
  const std::string path = _sandbox.path("own.log");
  _sandbox.write(path, "of an earlier run\n");

  const int traceFile = InstallUtil::openTraceFile();
  const int own = InstallUtil::openTraceFile(path);
  log(LogLevel::info, "inside");
  InstallUtil::closeTraceFile(own);
  log(LogLevel::info, "behind");
  InstallUtil::closeTraceFile(traceFile);

  EXPECT_THAT(_sandbox.read(path), EndsWith("<Info>: inside\n"));
  EXPECT_THAT(_sandbox.read(path), Not(StartsWith("of an earlier run")));
  EXPECT_THAT(trace(), EndsWith("<Info>: behind\n"));
  EXPECT_FALSE(isOpen(own));
}

TEST_F(InstallUtilTracingTest, FileOfOnesOwnThatCannotBeHadIsMinusOne) {
  proves("LOG-9");
  EXPECT_EQ(InstallUtil::openTraceFile(_sandbox.path("missing/own.log")), -1);
  EXPECT_EQ(InstallUtil::openTraceFile(""), -1);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallUtilTracingTest, TraceFileThatCannotBeHadIsMinusOneWithoutALine) {
  proves("LOG-8");
  _sandbox.makeFolder(Platform::current().paths.traceFile);

  EXPECT_EQ(InstallUtil::openTraceFile(), -1);
  EXPECT_EQ(InstallUtil::setupTraceOutput(), -1);

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

// A log that mirrors itself nowhere, and tells which file it was asked to take.
class RefusingLog : public SystemLog {
 public:
  void write(LogLevel, std::string_view) override {}
  int addFile(int descriptor) override {
    asked = descriptor;
    return 1;
  }
  void removeFile(int) override {}

  int asked = -1;
};

TEST_F(InstallUtilTracingTest, TraceFileThatTheLogRefusesIsClosedAgain) {
  RefusingLog refusing;
  _sandbox.platform().log = &refusing;

  EXPECT_EQ(InstallUtil::openTraceFile(), -1);

  EXPECT_NE(refusing.asked, -1);
  EXPECT_FALSE(isOpen(refusing.asked));
}

TEST_F(InstallUtilTracingTest, ClosingNoTraceFileDoesNothing) {
  proves("LOG-7");
  InstallUtil::closeTraceFile(-1);

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallUtilTracingTest, SetUpTraceStaysAttached) {
  proves("LOG-7");
  EXPECT_EQ(InstallUtil::setupTraceOutput(), 0);
  log(LogLevel::notice, "later");

  EXPECT_THAT(trace(), EndsWith("<Notice>: later\n"));
  EXPECT_THAT(_sandbox.users().switches, ElementsAre(501, 0));
}

TEST_F(InstallUtilTracingTest, LocaleComesFromTheUsersGlobalPreferences) {
  proves("USER-3");
  writePreference(".GlobalPreferences", {{"AppleLocale", "de_DE"}});

  EXPECT_EQ(InstallUtil::getCurrentLocale(), "de_DE");
  EXPECT_THAT(_sandbox.users().switches, ElementsAre(501, 0));
}

TEST_F(InstallUtilTracingTest, LocaleDefaultsToEnglish) {
  proves("USER-3");
  EXPECT_EQ(InstallUtil::getCurrentLocale(), "en_US");

  writePreference(".GlobalPreferences", {{"Other", "de_DE"}});

  EXPECT_EQ(InstallUtil::getCurrentLocale(), "en_US");
}

TEST_F(InstallUtilTracingTest, LocaleOfAnotherTypeReadsAsNone) {
  proves("USER-3");
  writePreference(".GlobalPreferences", {{"AppleLocale", 3}});

  EXPECT_EQ(InstallUtil::getCurrentLocale(), "en_US");
}

class UnsupportedCharacterTest : public ::testing::TestWithParam<char> {};

TEST_P(UnsupportedCharacterTest, RefusesThePathWhereverItStands) {
  proves("CHECK-2");
  const std::string character(1, GetParam());

  EXPECT_TRUE(InstallUtil::containUnSupportedCharacters(character));
  EXPECT_TRUE(InstallUtil::containUnSupportedCharacters("/a/b" + character + "c/d"));
  EXPECT_TRUE(InstallUtil::containUnSupportedCharacters(character + "/a"));
  EXPECT_TRUE(InstallUtil::containUnSupportedCharacters("/a/" + character));
}

INSTANTIATE_TEST_SUITE_P(All, UnsupportedCharacterTest,
                         ::testing::Values('!', '"', '\'', ';', '\\', '#', '%', '|', '=', '?',
                                           ':'));

TEST(SupportedCharactersTest, AcceptsEverythingElse) {
  proves("CHECK-2");
  EXPECT_FALSE(InstallUtil::containUnSupportedCharacters(std::nullopt));
  EXPECT_FALSE(InstallUtil::containUnSupportedCharacters(""));
  for (int number = 1; number < 256; ++number) {
    const char character = static_cast<char>(number);
    if (std::string("!\"';\\#%|=?:").find(character) != std::string::npos) continue;
    EXPECT_FALSE(InstallUtil::containUnSupportedCharacters(std::string("/a") + character + "b"))
        << number;
  }
}

TEST(CaseInsensitivePrefixTest, IsFoundAtTheBeginningOnly) {
  proves("PATH-5");
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("/Applications/X", "/applications"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive(".KEYSTORE.bak", ".keystore"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("ÄX", "äx"));
  EXPECT_FALSE(InstallUtil::hasPrefixCaseInsensitive("X/Applications", "/Applications"));
  EXPECT_FALSE(InstallUtil::hasPrefixCaseInsensitive("ab", "abc"));
}

TEST(CaseInsensitivePrefixTest, LettersThatOnlyFoldingBringsTogetherAreTheSame) {
  // Final and long forms, compatibility letters, and one letter for two.
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("\u03C3\u03BF\u03C2x", "\u03A3\u039F\u03A3"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("key\u017Ftore", "keySTORE"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("\u00B5x", "\u03BC"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("STRASSE 1", "stra\u00DFe"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("stra\u00DFe 1", "STRASSE"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("\u13A0", "\uAB70"));
}

TEST(CaseInsensitivePrefixTest, EndsBehindAWholeCharacter) {
  EXPECT_FALSE(InstallUtil::hasPrefixCaseInsensitive("\u00DF", "s"));
  EXPECT_TRUE(InstallUtil::hasPrefixCaseInsensitive("\u00DF", "ss"));
}

TEST(CaseInsensitivePrefixTest, BytesThatAreNoTextAreThemselves) {
  EXPECT_TRUE(
      InstallUtil::hasPrefixCaseInsensitive("\xFF"
                                            "AB",
                                            "\xFF"
                                            "a"));
  EXPECT_FALSE(
      InstallUtil::hasPrefixCaseInsensitive("\xFF"
                                            "A",
                                            "\xFE"
                                            "A"));
  EXPECT_FALSE(InstallUtil::hasPrefixCaseInsensitive("\u00FF", "\xFF"));
}

TEST(CaseInsensitivePrefixTest, EmptyPrefixIsNone) {
  proves("PATH-5");
  EXPECT_FALSE(InstallUtil::hasPrefixCaseInsensitive("x", ""));
  EXPECT_FALSE(InstallUtil::hasPrefixCaseInsensitive("", ""));
}

TEST_F(InstallUtilTracingTest, ManifestVersionIsDayMonthYearHourMinute) {
  proves("STAMP-1");
  _sandbox.clock().set(2013, 3, 5, 9, 7);
  EXPECT_EQ(InstallUtil::generateNewManifestVersion(), "0503130907");

  _sandbox.clock().set(2009, 12, 31, 23, 59, 59);
  EXPECT_EQ(InstallUtil::generateNewManifestVersion(), "3112092359");

  _sandbox.clock().set(2100, 1, 1, 0, 0);
  EXPECT_EQ(InstallUtil::generateNewManifestVersion(), "0101000000");
}

TEST(ProcessDateTest, PadsOneCharacterOnly) {
  proves("STAMP-2");
  EXPECT_EQ(InstallUtil::processDate("7"), "07");
  EXPECT_EQ(InstallUtil::processDate("12"), "12");
  EXPECT_EQ(InstallUtil::processDate(""), "");
  EXPECT_EQ(InstallUtil::processDate("123"), "123");
}

TEST(ProcessDateTest, CountsCharactersAndNotBytes) {
  EXPECT_EQ(InstallUtil::processDate("\u0667"), "0\u0667");
  EXPECT_EQ(InstallUtil::processDate("\U0001D7D5"), "0\U0001D7D5");
  EXPECT_EQ(InstallUtil::processDate("\xE9"), "0\xE9");
  EXPECT_EQ(InstallUtil::processDate("\u0661\u0662"), "\u0661\u0662");
}

}  // namespace
}  // namespace installer::test
