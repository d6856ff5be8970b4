#include <gmock/gmock.h>

#include <set>

#include "hotfix/instance/InstanceService.h"
#include "instance/ProvisioningCommand.h"
#include "instance/ProvisioningRun.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"
#include "support/StubFileManager.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InstanceProvisioningTest : public InstanceFixture {
 protected:
  static std::vector<std::string> update(const std::optional<std::string>& data) {
    return ProvisioningCommand::arguments("update", "en_US", data);
  }
  static std::vector<std::string> cleanUp(const std::optional<std::string>& data) {
    return ProvisioningCommand::arguments("cleanup", "en_US", data);
  }
  void writeResult(const std::string& text) { _sandbox.write(inHome("../.provisioning_rc"), text); }
};

TEST_F(InstanceProvisioningTest, UpdateStartsTheGivenLauncherAndWaits) {
  InstanceService(home(), "/data").startProvisioningWithUpdate("/any/launcher");

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{"/any/launcher", update("/data")}));
  EXPECT_EQ(_sandbox.children().running(), 0U);
}

TEST_F(InstanceProvisioningTest, CleanUpStartsTheGivenLauncherAndWaits) {
  proves("LAUNCH-3");
  InstanceService(home(), "/data").startProvisioningWithCleanUp("/any/launcher");

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{"/any/launcher", cleanUp("/data")}));
  EXPECT_EQ(_sandbox.children().running(), 0U);
}

TEST_F(InstanceProvisioningTest, WithoutDataFolderThereIsNoDataPair) {
  proves("LAUNCH-2");
  InstanceService(home()).startProvisioningWithUpdate(launcher());
  InstanceService(home()).startProvisioningWithCleanUp(launcher());

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{launcher(), update(std::nullopt)},
                          Command{launcher(), cleanUp(std::nullopt)}));
}

TEST_F(InstanceProvisioningTest, LocaleIsTheUsers) {
  _sandbox.writePlist("Users/tester/Library/Preferences/.GlobalPreferences.plist",
                      {{"AppleLocale", "de_DE"}});

  InstanceService(home()).startProvisioningWithUpdate(launcher());

  ASSERT_EQ(_sandbox.children().started().size(), 1U);
  EXPECT_EQ(_sandbox.children().started()[0].arguments[6], "de_DE");
}

TEST_F(InstanceProvisioningTest, RunsStartWithoutHomeToo) {
  proves("LAUNCH-8");
  InstanceService(std::nullopt).startProvisioningWithUpdate("/any/launcher");

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{"/any/launcher", update(std::nullopt)}));
}

TEST_F(InstanceProvisioningTest, DataFolderIsDroppedWithoutHome) {
  proves("LAUNCH-8");
  _sandbox.write("file", "");

  InstanceService(_sandbox.path("file/rcp"), "/data").startProvisioningWithCleanUp("/any/launcher");

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{"/any/launcher", cleanUp(std::nullopt)}));
}

TEST_F(InstanceProvisioningTest, StartsSayNothingAndLeaveAnOldResult) {
  proves("LAUNCH-9");
  launcherAnswers("");
  writeResult("rc=7\n");
  InstanceService service(home());
  _sandbox.clearLog();

  service.startProvisioningWithCleanUp(launcher());
  service.startProvisioningWithUpdate(launcher());

  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_EQ(_sandbox.read(inHome("../.provisioning_rc")), "rc=7\n");
}

TEST_F(InstanceProvisioningTest, AbsentLauncherIsAnErrorLine) {
  runProvisioning(std::nullopt, {"x"});

  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::error,
                               "Not able to start rcplauncher: the rcp home is unknown.")));
}

TEST_F(InstanceProvisioningTest, LauncherThatCannotBeStartedIsAnErrorLine) {
  _sandbox.children().failToStart("/any/launcher");

  runProvisioning("/any/launcher", {"x"});

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::error,
                               "Not able to start /any/launcher: No such file or directory.")));
}

TEST_F(InstanceProvisioningTest, ResultNeedsHomeAndFile) {
  proves("RESULT-1");
  EXPECT_EQ(InstanceService(std::nullopt).getProvisioningResult(), -1);
  EXPECT_EQ(InstanceService(home()).getProvisioningResult(), -1);

  writeResult("rc=0\n");
  InstanceService service(home());
  _sandbox.remove(kHome);

  EXPECT_EQ(service.getProvisioningResult(), -1);
}

struct ResultCase {
  const char* text;
  int result;
};

class ProvisioningResultTest : public InstanceFixture,
                               public ::testing::WithParamInterface<ResultCase> {};

TEST_P(ProvisioningResultTest, IsReadFromTheLeadingInteger) {
  proves("RESULT-2");
  _sandbox.write(inHome("../.provisioning_rc"), GetParam().text);

  EXPECT_EQ(InstanceService(home()).getProvisioningResult(), GetParam().result) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ProvisioningResultTest,
    ::testing::Values(ResultCase{"rc=0\n", 0}, ResultCase{"rc=2\n", 0}, ResultCase{"rc=1\n", -1},
                      ResultCase{"rc=3\n", -1}, ResultCase{"rc=-1\n", -1}, ResultCase{"rc=-2", -1},
                      ResultCase{"rc=abc", 0}, ResultCase{"rc=2x", 0}, ResultCase{"rc=20", -1},
                      ResultCase{"rc=", 0}, ResultCase{"rc", 0}, ResultCase{"rc=+2", 0},
                      ResultCase{"rc=-0", 0}, ResultCase{"rc=-", 0}, ResultCase{"rc=--2", 0},
                      ResultCase{"rc=1\nrc=2", 0}, ResultCase{"rc : 2", 0}, ResultCase{"rc=02", 0},
                      ResultCase{"x=0\n", -1}, ResultCase{"", -1}, ResultCase{"# rc=0\n", -1},
                      ResultCase{"rc=4294967296", -1}, ResultCase{"rc=4294967298", -1},
                      ResultCase{"rc=18446744073709551618", -1}, ResultCase{"rc=-4294967296", -1},
                      ResultCase{"rc=9", -1}, ResultCase{"RC=0", -1},
                      ResultCase{"rc=2147483648", -1}, ResultCase{"rc=12", -1},
                      ResultCase{"rc=2/", 0}, ResultCase{"rc=2:", 0}, ResultCase{"rc=+-1", 0},
                      ResultCase{"rc=0000000000000000000002", 0}));

TEST_F(InstanceProvisioningTest, BlanksBeforeTheCodeAreSkipped) {
  proves("RESULT-2");
  // Text without digits counts as 0, a success; only the skipped blanks let the failure be seen.
  writeResult("rc=\t \\ 1\n");

  EXPECT_EQ(InstanceService(home()).getProvisioningResult(), -1);
}

// A disk that holds what the test names, and nothing that could be changed.
class NamedFiles : public StubFileManager {
 public:
  std::set<std::string> present;

  bool exists(const std::string& path, FileError*) override { return present.contains(path); }
};

class TildeHomeTest : public InstanceProvisioningTest {
 protected:
  TildeHomeTest() {
    _files.contents[_sandbox.path("Users/tester/.provisioning_rc")] = "rc=0\n";
    _files.present = {kTildeHome, userHome(), kTildeResult};
    _sandbox.platform().files = &_files;
  }

  // The home that the user database knows.
  std::string userHome() const { return _sandbox.path("Users/tester/rcp"); }

  static constexpr const char* kTildeHome = "~/rcp";
  static constexpr const char* kTildeResult = "~/.provisioning_rc";
  NamedFiles _files;
};

TEST_F(TildeHomeTest, ResultCountsWhereTheHomeExistsForTheUser) {
  proves("RESULT-3");
  const InstanceService service(kTildeHome);

  EXPECT_EQ(service.getProvisioningResult(), 0);

  _files.present.erase(userHome());

  EXPECT_EQ(service.getProvisioningResult(), -1);
}

TEST_F(TildeHomeTest, ResultIsLookedForBesideTheHomeAsItIsWritten) {
  proves("RESULT-3");
  _files.present.erase(kTildeResult);
  _files.present.insert(_sandbox.path("Users/tester/.provisioning_rc"));

  EXPECT_EQ(InstanceService(kTildeHome).getProvisioningResult(), -1);
}

TEST_F(InstanceProvisioningTest, OldResultIsRemoved) {
  proves("RESULT-6");
  writeResult("rc=0\n");

  InstanceService(home()).removeProvisionRCFile();

  EXPECT_FALSE(_sandbox.exists(inHome("../.provisioning_rc")));
}

TEST_F(InstanceProvisioningTest, OldResultStaysWithoutHome) {
  proves("RESULT-6");
  writeResult("rc=0\n");

  InstanceService(std::nullopt).removeProvisionRCFile();

  EXPECT_TRUE(_sandbox.exists(inHome("../.provisioning_rc")));
}

TEST_F(InstanceProvisioningTest, OldResultStaysWhenTheHomeIsGone) {
  proves("RESULT-6");
  writeResult("rc=0\n");
  InstanceService service(home());
  _sandbox.remove(kHome);

  service.removeProvisionRCFile();

  EXPECT_TRUE(_sandbox.exists("Applications/Quillmere.app/Contents/MacOS/.provisioning_rc"));
}

TEST_F(InstanceProvisioningTest, OldResultThatCannotBeLookedAtIsTold) {
  proves("FILES-21");
  writeResult("rc=0\n");
  const std::string file =
      _sandbox.path("Applications/Quillmere.app/Contents/MacOS/.provisioning_rc");
  InstanceService service(home());
  _sandbox.files().failReading(file, EACCES);
  _sandbox.clearLog();

  service.removeProvisionRCFile();

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 \"" + file + "\" cannot be looked at: Permission denied"));
}

TEST_F(InstanceProvisioningTest, LinkToNothingIsNoOldResult) {
  proves("RESULT-6");
  _sandbox.makeLink(inHome("../.provisioning_rc"), "nothing");

  InstanceService(home()).removeProvisionRCFile();

  EXPECT_EQ(_sandbox.linkTarget(inHome("../.provisioning_rc")), "nothing");
}

TEST_F(InstanceProvisioningTest, NoOldResultIsNoChange) {
  proves("RESULT-6");
  InstanceService service(home());
  const std::size_t before = _sandbox.files().operations().size();

  service.removeProvisionRCFile();

  EXPECT_EQ(_sandbox.files().operations().size(), before);
}

}  // namespace
}  // namespace installer::test
