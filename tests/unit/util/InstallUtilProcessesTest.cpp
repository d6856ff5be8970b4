#include <gmock/gmock.h>

#include "hotfix/util/InstallUtil.h"
#include "platform/ProcessTable.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InstallUtilProcessesTest : public ::testing::Test {
 protected:
  Sandbox _sandbox;
};

TEST_F(InstallUtilProcessesTest, CommandLineGoesToTheShellAndItsStatusIsAnsweredUnchanged) {
  proves("CHILD-8");
  _sandbox.children().setShellStatus(0x0300);

  EXPECT_EQ(InstallUtil::startProvisionWithArgs("rcplauncher -x 'a b' >/dev/null"), 0x0300);

  EXPECT_THAT(_sandbox.children().shellLines(), ElementsAre("rcplauncher -x 'a b' >/dev/null"));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallUtilProcessesTest, AllProcessesAreToldInOrder) {
  proves("PROCESS-1");
  _sandbox.processes().add("/usr/bin/b");
  _sandbox.processes().add("/usr/bin/a");

  EXPECT_THAT(InstallUtil::getAllProcess(processKey::kExecutable),
              ElementsAre("/usr/bin/b", "/usr/bin/a"));
  EXPECT_THAT(InstallUtil::getAllProcess(processKey::kName), ElementsAre("b", "a"));
  EXPECT_THAT(InstallUtil::getAllProcess("NoSuchKey"), IsEmpty());
}

TEST_F(InstallUtilProcessesTest, ExecutableInsideTheBundleCountsAsRunning) {
  _sandbox.processes().add("/Applications/Quillmere.app/Contents/MacOS/Quillmere");

  EXPECT_TRUE(InstallUtil::checkBundleIsRunning("/Applications/Quillmere.app"));
}

TEST_F(InstallUtilProcessesTest, LettersCaseDoesNotMatterOnEitherSide) {
  _sandbox.processes().add("/applications/quillmere.APP/Contents/MacOS/rcplauncher");

  EXPECT_TRUE(InstallUtil::checkBundleIsRunning("/Applications/QUILLMERE.app"));
}

TEST_F(InstallUtilProcessesTest, CaseIsIgnoredBeyondAscii) {
  proves("CHECK-6");
  _sandbox.processes().add("/Applications/Äpfel.app/x");

  EXPECT_TRUE(InstallUtil::checkBundleIsRunning("/Applications/äPFEL.app"));
}

TEST_F(InstallUtilProcessesTest, NoSeparatorIsLookedForBehindThePrefix) {
  proves("CHECK-6");
  _sandbox.processes().add("/Applications/Quillmere.app2/Contents/MacOS/x");

  EXPECT_TRUE(InstallUtil::checkBundleIsRunning("/Applications/Quillmere.app"));
}

TEST_F(InstallUtilProcessesTest, PathInsideAnExecutablesPathIsNoPrefix) {
  proves("CHECK-6");
  _sandbox.processes().add("/Volumes/Applications/Quillmere.app/x");

  EXPECT_FALSE(InstallUtil::checkBundleIsRunning("/Applications/Quillmere.app"));
}

TEST_F(InstallUtilProcessesTest, EmptyPathMatchesAnyProcess) {
  proves("PROCESS-3");
  _sandbox.processes().add("/usr/bin/a");

  EXPECT_TRUE(InstallUtil::checkBundleIsRunning(""));
}

TEST_F(InstallUtilProcessesTest, EmptyPathMatchesNothingAmongNoProcesses) {
  proves("PROCESS-3");
  EXPECT_FALSE(InstallUtil::checkBundleIsRunning(""));
}

TEST_F(InstallUtilProcessesTest, EveryProcessIsLoggedWhenNoneMatches) {
  proves("CHECK-8");
  _sandbox.processes().add("/usr/bin/a");
  _sandbox.processes().add("/usr/bin/b");

  EXPECT_FALSE(InstallUtil::checkBundleIsRunning("/Applications/Quillmere.app"));

  EXPECT_THAT(_sandbox.log(), ElementsAre(Says(LogLevel::info, ">>>> current is /usr/bin/a."),
                                          Says(LogLevel::info, ">>>> current is /usr/bin/b.")));
}

TEST_F(InstallUtilProcessesTest, LoggingEndsWithTheFirstMatch) {
  proves("CHECK-8");
  _sandbox.processes().add("/usr/bin/a");
  _sandbox.processes().add("/Q.app/x");
  _sandbox.processes().add("/usr/bin/b");

  EXPECT_TRUE(InstallUtil::checkBundleIsRunning("/Q.app"));

  EXPECT_THAT(_sandbox.log(), ElementsAre(Says(LogLevel::info, ">>>> current is /usr/bin/a."),
                                          Says(LogLevel::info, ">>>> current is /Q.app/x.")));
}

TEST_F(InstallUtilProcessesTest, BundleIsFoundUnderItsResolvedPathToo) {
  proves("PROCESS-2");
  _sandbox.processes().report("/link/Q.app", "/Real/Q.app");
  _sandbox.processes().add("/real/q.app/Contents/MacOS/Q");

  EXPECT_TRUE(InstallUtil::checkBundleIsRunning("/link/Q.app"));
}

TEST_F(InstallUtilProcessesTest, NamesAreNotResolved) {
  proves("PROCESS-2");
  _sandbox.processes().report("quill", "real");
  _sandbox.processes().add("/usr/bin/realmere");

  EXPECT_FALSE(InstallUtil::checkBundleIsRunning("quill", processKey::kName));
  EXPECT_TRUE(InstallUtil::checkBundleIsRunning("REAL", processKey::kName));
}

TEST(BundlePathTest, EndsBehindTheApplicationsExtension) {
  proves("PROCESS-5");
  EXPECT_EQ(InstallUtil::getBundlePath("/Applications/Quillmere.app/Contents/MacOS/rcp"),
            "/Applications/Quillmere.app");
}

TEST(BundlePathTest, LastApplicationWins) {
  proves("PROCESS-5");
  EXPECT_EQ(InstallUtil::getBundlePath("/A.app/Contents/MacOS/B.app/Contents/MacOS/x"),
            "/A.app/Contents/MacOS/B.app");
}

TEST(BundlePathTest, IsAbsentOutsideOfApplications) {
  proves("PROCESS-5");
  EXPECT_EQ(InstallUtil::getBundlePath("/usr/bin"), std::nullopt);
  EXPECT_EQ(InstallUtil::getBundlePath("/A.APP/Contents/MacOS"), std::nullopt);
  EXPECT_EQ(InstallUtil::getBundlePath("/A.app/Contents/Resources"), std::nullopt);
  EXPECT_EQ(InstallUtil::getBundlePath(""), std::nullopt);
}

TEST_F(InstallUtilProcessesTest, BundleIdComesFromTheBundlesInfo) {
  proves("PROCESS-6");
  _sandbox.writePlist("B.app/Contents/Info.plist",
                      {{"CFBundleIdentifier", "com.example.b"}, {"Other", 1}});

  EXPECT_EQ(InstallUtil::getBundleID(_sandbox.path("B.app")), "com.example.b");
}

TEST_F(InstallUtilProcessesTest, BundleIdIsFoundBelowTheHomeFolder) {
  proves("PROCESS-6");
  _sandbox.writePlist("Users/tester/B.app/Contents/Info.plist",
                      {{"CFBundleIdentifier", "com.example.b"}});

  EXPECT_EQ(InstallUtil::getBundleID("~/B.app"), "com.example.b");
}

TEST_F(InstallUtilProcessesTest, BundleIdIsAbsentWithoutFileOrText) {
  proves("PROCESS-6");
  _sandbox.writePlist("B.app/Contents/Info.plist", {{"CFBundleIdentifier", 7}});

  EXPECT_EQ(InstallUtil::getBundleID(_sandbox.path("B.app")), std::nullopt);
  EXPECT_EQ(InstallUtil::getBundleID(_sandbox.path("Missing.app")), std::nullopt);
}

struct TargetName {
  const char* path;
  const char* name;
};

class TargetNameTest : public ::testing::TestWithParam<TargetName> {
 protected:
  Sandbox _sandbox;
};

TEST_P(TargetNameTest, IsTheApplicationsTextBeforeTheFirstDot) {
  proves("PROCESS-7");
  EXPECT_EQ(InstallUtil::getTargetNameBy(GetParam().path), GetParam().name);

  EXPECT_THAT(
      _sandbox.log(),
      ElementsAre(Says(LogLevel::info, std::string("pathToRCPHome is ") + GetParam().path + "."),
                  Says(LogLevel::info, std::string("targetName is ") + GetParam().name + ".")));
}

INSTANTIATE_TEST_SUITE_P(
    Paths, TargetNameTest,
    ::testing::Values(TargetName{"/Applications/Quillmere.app/Contents/MacOS/rcp", "Quillmere"},
                      TargetName{"/x/My.Tool.app/Contents/MacOS/rcp", "My"},
                      TargetName{"/srv/webapp/rcp", "webapp"}, TargetName{"/A.app/B.app/rcp", "B"},
                      TargetName{"A.app", "A"}, TargetName{"/x/.app/rcp", ""},
                      TargetName{"/A.app/B.APP/rcp//", "A"}));

TEST_F(InstallUtilProcessesTest, TargetNameOfTheRootItselfIsTheRoot) {
  proves("PROCESS-7");
  EXPECT_EQ(InstallUtil::getTargetNameBy("/"), "/");
  EXPECT_EQ(InstallUtil::getTargetNameBy("//"), "/");
}

TEST_F(InstallUtilProcessesTest, TargetNameOfAPathWithoutApplicationIsTheRootAndAnError) {
  proves("PROCESS-7");
  EXPECT_EQ(InstallUtil::getTargetNameBy("/opt/rcp"), "/");

  EXPECT_THAT(
      _sandbox.log(),
      ElementsAre(Says(LogLevel::info, "pathToRCPHome is /opt/rcp."),
                  Says(LogLevel::error,
                       "Error path value, please provide a valid path value for rcp home.")));
}

TEST_F(InstallUtilProcessesTest, TargetNameOfARelativePathEndsAtTheEmptyPath) {
  proves("PROCESS-7");
  EXPECT_EQ(InstallUtil::getTargetNameBy("opt/rcp"), "");

  EXPECT_THAT(_sandbox.log(), ElementsAre(AtLevel(LogLevel::info), AtLevel(LogLevel::error)));
}

}  // namespace
}  // namespace installer::test
