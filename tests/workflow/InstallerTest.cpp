#include "hotfix/driver/Installer.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>

#include <algorithm>
#include <filesystem>
#include <new>

#include "driver/ErrorStatus.h"
#include "hotfix/base/Path.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/ProvisioningCommand.h"
#include "support/FolderHolder.h"
#include "support/PackageFixture.h"
#include "support/Proves.h"
#include "support/RecordingPasteboard.h"
#include "support/TreeSnapshot.h"

namespace installer::test {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using PropertyList::Value;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class InstallerTest : public PackageFixture {
 protected:
  InstallerTest() { _sandbox.clock().set(2013, 3, 5, 9, 7); }

  int run(const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {"HotfixInstaller"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    ::testing::internal::CaptureStdout();
    const int status = runInstaller(all);
    _output = ::testing::internal::GetCapturedStdout();
    return status;
  }
  int run() { return run({package(), destination(), "-rcpdata", data()}); }

  Dictionary record() const { return InstallUtil::getErrorMessage().value_or(Dictionary()); }
  static Dictionary code(int number, const Array& details) {
    return {{"ERROR_CODE", number}, {"ERROR_DETAILS", details}};
  }
  bool hasMarker() const { return _sandbox.exists(_sandbox.paths().errorMarker); }
  std::size_t services() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        linesAt(LogLevel::info),
        [](const std::string& line) { return line.starts_with("The pathToRcphome is: "); }));
  }
  void registerBundle(const std::string& bundle) {
    _sandbox.writePlist(_sandbox.paths().registrations + "/Quillmere/framework.plist",
                        {{"pathToProduct", bundle}});
  }

  std::string _output;
};

TEST_F(InstallerTest, InstallsTheHotfix) {
  proves("RUN-1");
  EXPECT_EQ(run(), 0);

  EXPECT_EQ(*info().find("hotfixVersion"), Value("6.2.3.1"));
  EXPECT_THAT(runs(), ElementsAre("update", "hotfix"));
  EXPECT_EQ(record(), code(0, {}));
  EXPECT_FALSE(hasMarker());
  EXPECT_EQ(services(), 6U);
  EXPECT_EQ(_output, "");
}

TEST_F(InstallerTest, TraceHoldsTheWholeRunAndIsClosed) {
  proves("LOG-7");
  _sandbox.write(_sandbox.paths().traceFile, "of an earlier run\n");

  EXPECT_EQ(run(), 0);
  _sandbox.platform().log->write(LogLevel::info, "behind");

  const std::string trace = _sandbox.read(_sandbox.paths().traceFile);
  EXPECT_THAT(trace, HasSubstr("<Info>: Begin to install hotfix.\n"));
  EXPECT_THAT(trace, Not(HasSubstr("earlier")));
  EXPECT_THAT(trace, Not(HasSubstr("behind")));
  EXPECT_THAT(trace, HasSubstr("Begin to call collection utility"));
}

TEST_F(InstallerTest, PreferenceForTracesIsReadAtTheStartAndAtTheEnd) {
  proves("LOG-5");
  _sandbox.users().switches.clear();
  const uid_t self = _sandbox.users().effectiveUser;
  ::testing::internal::CaptureStderr();

  EXPECT_EQ(run(std::vector<std::string>()), 1);

  (void)::testing::internal::GetCapturedStderr();  // ends the capture
  const uid_t user = _sandbox.users().userList[0].uid;
  EXPECT_THAT(_sandbox.users().switches, ElementsAre(user, self, user, self));
}

TEST_F(InstallerTest, FirstLinesTellHowItWasStarted) {
  proves("RUN-3");
  EXPECT_EQ(run(), 0);

  const std::vector<std::string> lines = numberedLines();
  EXPECT_EQ(lines[0], "6 Begin to install hotfix.");
  EXPECT_EQ(lines[1], "6 Caller specified rcpdata");
  EXPECT_EQ(lines[2], "6 Check whether the unsupported characters are contained.");
  EXPECT_EQ(lines[3], "6 Check whether the target platform is installed.");
  EXPECT_EQ(lines[4], "6 Check the target platform under " + home() + ".");
}

TEST_F(InstallerTest, ChecksAndSuccessAreLoggedInOrder) {
  proves("RUN-3", "CHECK-1");
  EXPECT_EQ(run(), 0);

  std::vector<std::string> steps;
  for (const std::string& line : linesAt(LogLevel::info))
    if (line.starts_with("Check") || line.starts_with("Current hotfix") ||
        line.starts_with("Installed hotfix") || line == "Success" || line.starts_with("Hot fix"))
      steps.push_back(line);
  EXPECT_THAT(steps, ElementsAre("Check whether the unsupported characters are contained.",
                                 "Check whether the target platform is installed.",
                                 "Check the target platform under " + home() + ".",
                                 "Check whether platform is running.",
                                 "Check the version of hotfix", "Current hotfix version: 6.2.3.1.",
                                 "Installed hotfix version: (null).", "Success"));
}

TEST_F(InstallerTest, DataFolderIsTakenFromTheFourthPlaceOnly) {
  proves("ARGS-3");
  const std::vector<std::vector<std::string>> unused = {
      {package(), destination()},
      {package(), destination(), "-rcpdata"},
      {package(), destination(), "-RCPDATA", data()},
      {package(), destination(), "other", data()}};
  for (const auto& arguments : unused) {
    _sandbox.clearLog();
    EXPECT_EQ(run(arguments), 0);
    EXPECT_EQ(numberedLines()[1], "6 Caller didn't specify rcpdata, use rcp/systemdata");
    EXPECT_EQ(_sandbox.children().started().back().arguments.back(), homePath("systemdata"));
  }
  EXPECT_EQ(run({package(), destination(), "-rcpdata", data(), "more"}), 0);
  EXPECT_EQ(_sandbox.children().started().back().arguments.back(), data());
}

TEST_F(InstallerTest, TooFewArgumentsAreAUsageLineBehindTheResetRecord) {
  proves("ARGS-2");
  InstallUtil::sendErrorMessage(ErrorCode::applicationRunning, {"old"});
  for (const auto& arguments : {std::vector<std::string>(), {package()}}) {
    _sandbox.clearLog();
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(run(arguments), 1);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "Usage: HotfixInstaller <pathToInstallPackage> <pathToInstallDestination> "
              "[-rcpdata <pathToRcpData>]\n");
    EXPECT_THAT(numberedLines(), ElementsAre("6 Begin to install hotfix."));
  }
  EXPECT_EQ(record(), code(0, {}));
  EXPECT_FALSE(hasMarker());
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(InstallerTest, MissingWorkspaceFlagDoublesTheInstallation) {
  proves("SUCCESS-4");
  _sandbox.remove("data/.config");

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(runs(), ElementsAre("update", "hotfix", "hotfix"));
  EXPECT_THAT(
      linesAt(LogLevel::info),
      Contains("Hot fix workspace flag file is missing, launching install new hotfix twice"));
}

TEST_F(InstallerTest, WorkspaceFlagThatCannotBeLookedAtIsTold) {
  proves("FILES-21");
  const std::string flag = _sandbox.path("data/.config");
  _sandbox.files().failReading(flag, EIO);

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(linesAt(LogLevel::error),
              Contains("\"" + flag + "\" cannot be looked at: Input/output error"));
}

TEST_F(InstallerTest, HomeThatCannotBeLookedAtIsTold) {
  proves("FILES-21");
  _sandbox.files().failReading(home(), EIO);

  EXPECT_EQ(run(), 1);

  EXPECT_THAT(linesAt(LogLevel::error),
              Contains("\"" + home() + "\" cannot be looked at: Input/output error"));
}

TEST_F(InstallerTest, MissingManifestStopsBothOfTwoInstallations) {
  proves("SUCCESS-6");
  _sandbox.remove("data/.config");
  _sandbox.remove("HF/deploy/install.hotfix.xml");
  RecordingPasteboard pasteboard;
  _sandbox.platform().pasteboard = &pasteboard;

  EXPECT_EQ(run(), 1);

  const Dictionary missing = code(4, {package() + "/../deploy/install.hotfix.xml"});
  EXPECT_THAT(pasteboard.stored, ElementsAre(code(0, {}), missing, missing));
  EXPECT_THAT(runs(), ElementsAre("update"));
}

TEST_F(InstallerTest, OnlyTheSecondOfTwoInstallationsCounts) {
  _sandbox.remove("data/.config");
  int hotfixRuns = 0;
  const auto play = [&](const char* first, const char* second) {
    hotfixRuns = 0;
    _sandbox.children().onStart([=, this, &hotfixRuns](const Command& command) {
      const bool isHotfix = command.arguments.size() == 15;
      const char* result = isHotfix && ++hotfixRuns == 2 ? second : first;
      _sandbox.write(inHome("../.provisioning_rc"), result);
    });
  };

  play("rc=1\n", "rc=0\n");
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(hotfixRuns, 2);
  _sandbox.remove(inHome("installInfo.plist"));
  play("rc=0\n", "rc=1\n");
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(hotfixRuns, 2);
}

TEST_F(InstallerTest, OlderHotfixIsRemovedFirst) {
  proves("SUCCESS-1");
  writeInfo({{"hotfixVersion", "6.1"}});
  _sandbox.write(inHome("deploy/uninstall.hotfix.xml"), "old");

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(runs(), ElementsAre("update", "update", "update", "hotfix"));
  EXPECT_EQ(services(), 7U);
  EXPECT_EQ(_output, "The provisioning operations have completed successfully.\n");
  EXPECT_THAT(linesAt(LogLevel::info),
              Contains("Found another hot fix, uninstall it before installing the new hot fix"));
}

TEST_F(InstallerTest, EqualHotfixIsRemovedAndInstalledAgain) {
  proves("VERSION-6");
  writeInfo({{"hotfixVersion", "6.2.3.1"}});
  _sandbox.write(inHome("deploy/uninstall.hotfix.xml"), "old");

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(runs(), ElementsAre("update", "update", "update", "hotfix"));
}

TEST_F(InstallerTest, FailedRemovalDoesNotStopTheInstallation) {
  proves("SUCCESS-1");
  writeInfo({{"hotfixVersion", "6.1"}});

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(runs(), ElementsAre("update", "hotfix"));
  EXPECT_EQ(*info().find("hotfixVersion"), Value("6.2.3.1"));
}

TEST_F(InstallerTest, UpdateRunComesBeforeAnythingOfTheHotfixAndCarriesTheId) {
  proves("SUCCESS-2");
  _sandbox.write("data/.config/rcpinstall.properties", "rcp.install.id=x\n");
  _sandbox.write(inHome("rcplauncher.properties"), "provisioning.manifest.version=V\n");
  std::vector<bool> hadManifest;
  _sandbox.children().onStart([&](const Command&) {
    hadManifest.push_back(_sandbox.exists(inHome("deploy/install.update.xml")));
    _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
  });

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(hadManifest, ElementsAre(false, true));
  EXPECT_EQ(_sandbox.read("data/.config/rcpinstall.properties"), "rcp.install.id=V\n");
}

TEST_F(InstallerTest, FailedInstallationAfterPassedChecksLeavesNoMarker) {
  proves("RUN-1", "SUCCESS-7");
  launcherAnswers("rc=1\n");

  EXPECT_EQ(run(), 1);

  EXPECT_FALSE(hasMarker());
  EXPECT_EQ(record(), code(0, {}));
  EXPECT_THAT(runs(), ElementsAre("update", "hotfix"));
  EXPECT_THAT(linesAt(LogLevel::info), Not(Contains("Not success")));
}

TEST_F(InstallerTest, FailurePathRecoversTheInstanceAndLeavesTheMarker) {
  proves("RUN-1", "FAILURE-2");
  _sandbox.processes().add(_sandbox.path("Applications/Quillmere.app/Contents/MacOS/Quillmere"));
  for (const std::string& file :
       {inHome("file"), inHome("../shared/file"), std::string("data/file")})
    _sandbox.write(file, "", 0600);

  EXPECT_EQ(run(), 1);

  EXPECT_THAT(
      _sandbox.children().started(),
      ElementsAre(Command{launcher(), ProvisioningCommand::arguments("cleanup", "en_US", data())},
                  Command{launcher(), ProvisioningCommand::arguments("update", "en_US", data())}));
  EXPECT_EQ(_sandbox.read(inHome("rcplauncher.properties")),
            "provisioning.manifest.version=0101130000\nrcp.install.id=0503130907\n");
  for (const std::string& file :
       {inHome("file"), inHome("../shared/file"), std::string("data/file")})
    EXPECT_EQ(_sandbox.mode(file), 0775U) << file;
  EXPECT_TRUE(hasMarker());
  EXPECT_EQ(_sandbox.mode(_sandbox.paths().errorMarker), 0777U);
  EXPECT_EQ(_sandbox.read(_sandbox.paths().errorMarker), "");
  EXPECT_THAT(linesAt(LogLevel::info), Contains("Not success"));
  EXPECT_THAT(linesAt(LogLevel::notice), Contains(HasSubstr("HOTFIX_INSTALL")));
}

// Tells when the error marker is made; everything else is the sandbox's.
class MarkerWatch : public FailingFileManager {
 public:
  MarkerWatch(Sandbox& sandbox, std::function<void()> atMarker)
      : FailingFileManager(sandbox.users()),
        _marker(sandbox.paths().errorMarker),
        _atMarker(std::move(atMarker)) {}

  bool createFile(const std::string& path, std::string_view bytes,
                  const FileAttributes& attributes) override {
    if (path == _marker) _atMarker();
    return FailingFileManager::createFile(path, bytes, attributes);
  }

 private:
  std::string _marker;
  std::function<void()> _atMarker;
};

TEST_F(InstallerTest, MarkerComesLastOnTheFailurePath) {
  proves("FAILURE-8");
  _sandbox.processes().add(destination() + "/Quillmere.app/x");
  const std::vector<std::string> given = {inHome("file"), inHome("../shared/file"), "data/file"};
  for (const std::string& file : given) _sandbox.write(file, "", 0600);
  std::vector<std::vector<std::string>> runsAtMarker;
  std::vector<mode_t> modesAtMarker;
  MarkerWatch watch(_sandbox, [&] {
    runsAtMarker.push_back(runs());
    for (const std::string& file : given) modesAtMarker.push_back(_sandbox.mode(file));
  });
  _sandbox.platform().files = &watch;

  EXPECT_EQ(run(), 1);

  EXPECT_THAT(runsAtMarker, ElementsAre(ElementsAre("cleanup", "update")));
  EXPECT_THAT(modesAtMarker, ElementsAre(0775, 0775, 0775));
}

TEST_F(InstallerTest, InstallIdIsNewBeforeTheSecondRecoveryRun) {
  proves("FAILURE-2");
  _sandbox.processes().add(destination() + "/Quillmere.app/x");
  std::vector<bool> hadNewId;
  _sandbox.children().onStart([&](const Command&) {
    hadNewId.push_back(
        _sandbox.read(inHome("rcplauncher.properties")).find("rcp.install.id=0503130907") !=
        std::string::npos);
  });

  EXPECT_EQ(run(), 1);

  EXPECT_THAT(hadNewId, ElementsAre(false, true));
}

TEST_F(InstallerTest, UnsupportedCharacterInThePackagePathIsCodeThree) {
  _sandbox.write("HF/a;b.pkg/x", "");

  EXPECT_EQ(run({_sandbox.path("HF/a;b.pkg"), destination()}), 1);

  EXPECT_EQ(record(), code(3, {}));
  EXPECT_TRUE(hasMarker());
  EXPECT_THAT(linesAt(LogLevel::info),
              Not(Contains("Check whether the target platform is installed.")));
}

TEST_F(InstallerTest, UnsupportedCharacterInTheDestinationIsCodeThree) {
  EXPECT_EQ(run({package(), _sandbox.path("A=B")}), 1);

  EXPECT_EQ(record(), code(3, {}));
}

TEST_F(InstallerTest, MissingHomeIsCodeEightWithTwoDetails) {
  EXPECT_EQ(run({package(), _sandbox.path("Elsewhere")}), 1);

  EXPECT_EQ(record(), code(8, {_sandbox.path("Elsewhere"), "Quillmere.app"}));
  EXPECT_EQ(services(), 2U);
}

TEST_F(InstallerTest, HomeWithoutInstanceIsCodeEight) {
  _sandbox.remove(inHome("deploy/install.xml"));

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(8, {destination(), "Quillmere.app"}));
  EXPECT_EQ(services(), 3U);
  EXPECT_THAT(linesAt(LogLevel::info), Not(Contains("Check whether platform is running.")));
}

TEST_F(InstallerTest, RunningApplicationIsCodeSix) {
  proves("CHECK-5");
  _sandbox.processes().add("/usr/bin/other");
  _sandbox.processes().add(destination() + "/QUILLMERE.app/Contents/MacOS/Quillmere");

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(6, {"Quillmere"}));
  EXPECT_THAT(linesAt(LogLevel::info), Contains("The target platform Quillmere is running."));
  EXPECT_THAT(linesAt(LogLevel::info), Not(Contains("Check the version of hotfix")));
}

TEST_F(InstallerTest, SkippedRunningCheckLeavesNoLine) {
  describe("SKIPRUNNINGCHECK", "true");
  _sandbox.processes().add(destination() + "/Quillmere.app/Contents/MacOS/Quillmere");

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(linesAt(LogLevel::info), Not(Contains("Check whether platform is running.")));
  EXPECT_THAT(linesAt(LogLevel::info), Not(Contains(HasSubstr(">>>> current is"))));
}

TEST_F(InstallerTest, HigherInstalledHotfixIsCodeSeven) {
  writeInfo({{"hotfixVersion", "6.2.3.2"}});

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(7, {destination() + "/Quillmere.app"}));
  EXPECT_THAT(linesAt(LogLevel::error), ElementsAre("Higher version hotfix has been installed."));
  EXPECT_TRUE(hasMarker());
}

TEST_F(InstallerTest, VersionsAreComparedAsPlainText) {
  proves("VERSION-1");
  writeInfo({{"hotfixVersion", "1.9"}});
  describe("version", "1.10");
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(record(), code(7, {destination() + "/Quillmere.app"}));
  EXPECT_EQ(*info().find("hotfixVersion"), Value("1.9"));

  writeInfo({{"hotfixVersion", "10"}});
  describe("version", "2");
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(record(), code(0, {}));
  EXPECT_EQ(*info().find("hotfixVersion"), Value("2"));
}

TEST_F(InstallerTest, AbsentVersionsAreNoObstacle) {
  describe("version", std::nullopt);
  writeInfo({{"hotfixVersion", "9"}});

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(linesAt(LogLevel::info), Contains("Current hotfix version: (null)."));
}

TEST_F(InstallerTest, RegisteredBundleMovesTheDestination) {
  describe("allowMultiInstance", std::nullopt);
  registerBundle(_sandbox.path(kBundle));

  EXPECT_EQ(run({package(), _sandbox.path("Elsewhere"), "-rcpdata", data()}), 0);

  EXPECT_EQ(*info().find("hotfixVersion"), Value("6.2.3.1"));
}

TEST_F(InstallerTest, MultiInstanceDoesNotConsultTheRegistration) {
  proves("BUNDLE-6");
  registerBundle(_sandbox.path(kBundle));

  EXPECT_EQ(run({package(), _sandbox.path("Elsewhere")}), 1);

  EXPECT_EQ(record(), code(8, {_sandbox.path("Elsewhere"), "Quillmere.app"}));
}

TEST_F(InstallerTest, RegisteredBundleThatIsGoneIsPassedOver) {
  describe("allowMultiInstance", false);
  registerBundle(_sandbox.path("Gone.app"));

  EXPECT_EQ(run(), 0);

  EXPECT_EQ(*info().find("hotfixVersion"), Value("6.2.3.1"));
  EXPECT_FALSE(_sandbox.exists("Gone.app"));
}

TEST_F(InstallerTest, BundleRegisteredUnderAnotherNameSeparatesDriverAndWorkflow) {
  proves("BUNDLE-7");
  describe("allowMultiInstance", false);
  registerBundle(_sandbox.path("X/Other.app"));
  _sandbox.write("X/Other.app/Contents/MacOS/rcp/deploy/install.xml", "<m/>");

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(4, {"install.hotfix.xml"}));
  EXPECT_FALSE(hasMarker());
  EXPECT_FALSE(_sandbox.exists("X/Quillmere.app"));
}

TEST_F(InstallerTest, HigherHotfixInARegisteredBundleIsToldUnderThePackagesName) {
  proves("VERSION-2");
  describe("allowMultiInstance", false);
  registerBundle(_sandbox.path("X/Other.app"));
  _sandbox.write("X/Other.app/Contents/MacOS/rcp/deploy/install.xml", "<m/>");
  _sandbox.writePlist("X/Other.app/Contents/MacOS/rcp/installInfo.plist", {{"hotfixVersion", "9"}});

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(7, {_sandbox.path("X/Quillmere.app")}));
}

TEST_F(InstallerTest, RegisteredBundleMovesTheDestinationThoughItsHomeIsUnknown) {
  proves("BUNDLE-3");
  describe("allowMultiInstance", false);
  describe("frameworkPath", std::nullopt);
  registerBundle(_sandbox.makeFolder("X/Quillmere.app"));

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(8, {_sandbox.path("X"), "Quillmere.app"}));
}

TEST_F(InstallerTest, RegisteredRunningBundleIsFoundThoughTheDestinationMoved) {
  proves("CHECK-5");
  describe("allowMultiInstance", "no");
  registerBundle(_sandbox.path(kBundle));
  _sandbox.processes().add(_sandbox.path(kBundle) + "/Contents/MacOS/Quillmere");

  EXPECT_EQ(run({package(), _sandbox.path("Elsewhere")}), 1);

  EXPECT_EQ(record(), code(6, {"Quillmere"}));
}

TEST_F(InstallerTest, TrailingSlashOfTheDestinationStaysInTheDetailsOnly) {
  proves("BUNDLE-8");
  EXPECT_EQ(run({package(), _sandbox.path("Elsewhere") + "/"}), 1);

  EXPECT_EQ(record(), code(8, {_sandbox.path("Elsewhere") + "/", "Quillmere.app"}));
}

TEST_F(InstallerTest, PackageThatTellsTooLittleIsCodeEightAndOneLineThatSaysWhy) {
  proves("PACKAGE-2");
  const std::string plist = package() + "/Contents/Resources/hotfix.plist";
  const auto expectRefusal = [&](const std::string& path, const std::string& line,
                                 const Array& details) {
    _sandbox.clearLog();
    EXPECT_EQ(run({path, destination()}), 1) << line;
    EXPECT_EQ(record(), code(8, details)) << line;
    const std::string noHome = "No file at: (null)!";
    const std::string noLauncher = "Not able to start rcplauncher: the rcp home is unknown.";
    EXPECT_THAT(linesAt(LogLevel::error),
                ElementsAre(line, noHome, noLauncher, noLauncher, noHome));
    EXPECT_EQ(services(), 2U);
  };

  expectRefusal(_sandbox.path("none"),
                "There is no install package at " + _sandbox.path("none") + ".", {destination()});
  _sandbox.write("file", "");
  expectRefusal(_sandbox.path("file"),
                "There is no hotfix description at " + _sandbox.path("file") +
                    "/Contents/Resources/hotfix.plist.",
                {destination()});
  describe("frameworkPath", std::nullopt);
  expectRefusal(package(), "The hotfix description names no frameworkPath.",
                {destination(), "Quillmere.app"});
  describe("bundleName", 5);
  expectRefusal(package(), "The hotfix description names no bundleName.", {destination()});
  _sandbox.write(plist, "no list");
  expectRefusal(package(),
                "The hotfix description " + plist + " can not be read as a property list.",
                {destination()});
}

TEST_F(InstallerTest, RcpHomeOfTheDescriptionDoesNotCount) {
  proves("BUNDLE-2");
  describe("rcpHome", home());
  describe("bundleName", std::nullopt);

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(8, {destination()}));
  EXPECT_EQ(services(), 2U);
}

class OtherInstallerTest : public InstallerTest {
 protected:
  // Another installer at work on the home, until we have waited for it.
  OtherInstallerTest() {
    _sandbox.clock().onPause([this] { _other.letGo(); });
  }

  std::vector<std::string> waits() const {
    std::vector<std::string> lines = linesAt(LogLevel::notice);
    std::erase_if(lines, [](const std::string& line) { return !line.starts_with("Another"); });
    return lines;
  }

  static constexpr const char* kWaits =
      "Another installation is at work on this instance, waiting for its end.";

  FolderHolder _other{home()};
};

TEST_F(OtherInstallerTest, IsWaitedForBeforeTheFirstCheck) {
  proves("LOCK-1");
  EXPECT_EQ(run(), 0);

  EXPECT_THAT(waits(), ElementsAre(kWaits));
  const auto lines = numberedLines();
  EXPECT_EQ(std::ranges::find(lines, std::string("5 ") + kWaits) + 1,
            std::ranges::find(lines, "6 Check whether the unsupported characters are contained."));
}

TEST_F(OtherInstallerTest, IsWaitedForOnceByARefusedRunToo) {
  proves("LOCK-1");
  _sandbox.processes().add(destination() + "/Quillmere.app/Contents/MacOS/Quillmere");

  EXPECT_EQ(run(), 1);

  EXPECT_THAT(waits(), ElementsAre(kWaits));
  EXPECT_EQ(record(), code(6, {"Quillmere"}));
}

TEST_F(OtherInstallerTest, ItsLauncherIsNoRunningApplication) {
  proves("LOCK-1");
  _sandbox.processes().add(launcher());
  _sandbox.clock().onPause([this] {
    _sandbox.processes().clear();
    _other.letGo();
  });

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(waits(), ElementsAre(kWaits));
  EXPECT_EQ(record(), code(0, {}));
}

TEST_F(OtherInstallerTest, ApplicationStartedDuringTheWaitIsSeen) {
  proves("LOCK-1");
  _sandbox.clock().onPause([this] {
    _sandbox.processes().add(destination() + "/Quillmere.app/Contents/MacOS/Quillmere");
    _other.letGo();
  });

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(6, {"Quillmere"}));
  EXPECT_THAT(runs(), ElementsAre("cleanup", "update"));
}

TEST_F(OtherInstallerTest, HotfixThatItLeavesIsSeen) {
  _sandbox.clock().onPause([this] {
    writeInfo({{"hotfixVersion", "9"}});
    _other.letGo();
  });

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(7, {destination() + "/Quillmere.app"}));
}

TEST_F(InstallerTest, InstanceIsLockedForTheWholeRunAndNotBehindIt) {
  std::vector<bool> locked;
  _sandbox.children().onStart([&](const Command&) {
    locked.push_back(isLocked(home()));
    _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
  });

  EXPECT_EQ(run(), 0);
  EXPECT_FALSE(isLocked(home()));
  _sandbox.processes().add(destination() + "/Quillmere.app/x");
  EXPECT_EQ(run(), 1);

  EXPECT_FALSE(isLocked(home()));
  EXPECT_THAT(locked, ElementsAre(true, true, true, true));
}

TEST_F(OtherInstallerTest, IsWaitedForAtTheHomeOfTheWorkflowToo) {
  proves("LOCK-5");
  describe("allowMultiInstance", false);
  registerBundle(_sandbox.path("Applications/Other.app"));
  _sandbox.write("Applications/Other.app/Contents/MacOS/rcp/deploy/install.xml", "<m/>");

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(waits(), ElementsAre(kWaits));
}

TEST_F(InstallerTest, BothHomesAreLockedWhereTheWorkflowsIsNotTheRegisteredOne) {
  proves("LOCK-5");
  describe("allowMultiInstance", false);
  const std::string registered = "Applications/Other.app/Contents/MacOS/rcp";
  registerBundle(_sandbox.path("Applications/Other.app"));
  _sandbox.write(registered + "/deploy/install.xml", "<m/>");
  std::vector<bool> locked;
  _sandbox.children().onStart([&](const Command&) {
    locked.push_back(isLocked(home()));
    locked.push_back(isLocked(_sandbox.path(registered)));
    _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
  });

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(locked, ElementsAre(true, true, true, true));
}

TEST_F(InstallerTest, BothHomesAreLockedWhereThePackagesPathLeadsToTheWorkflows) {
  proves("LOCK-5", "PACKAGE-8");
  describe("frameworkPath", "${package}");
  const std::string checked = std::string(kBundle) + "/${package}/rcp";
  const std::string changed = std::string(kBundle) + package() + "/rcp";
  _sandbox.write(checked + "/deploy/install.xml", "<m/>");
  _sandbox.write(changed + "/deploy/install.xml", "<m/>");
  std::vector<bool> locked;
  _sandbox.children().onStart([&](const Command&) {
    locked.push_back(isLocked(_sandbox.path(checked)));
    locked.push_back(isLocked(_sandbox.path(changed)));
  });

  EXPECT_EQ(run(), 1) << "there is no launcher";

  EXPECT_THAT(locked, ElementsAre(true, true, true, true));
}

TEST_F(InstallerTest, NothingOfAnEarlierRunIsKept) {
  proves("RUN-6");
  EXPECT_EQ(run(), 0);
  describe("version", std::nullopt);
  _sandbox.clearLog();

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(linesAt(LogLevel::info), Contains("Current hotfix version: (null)."));
}

TEST_F(InstallerTest, WhatIsToldOnceIsToldInEachRun) {
  proves("RUN-6");
  const std::string configuration = _sandbox.paths().internalConfiguration;
  const auto countWarnings = [&] {
    _sandbox.clearLog();
    _sandbox.makeFolder(configuration);
    EXPECT_EQ(run(), 0);
    return std::ranges::count(
        linesAt(LogLevel::warning),
        "The file " + configuration + " is not a plain file of a trusted user, ignore it.");
  };

  EXPECT_EQ(countWarnings(), 1);
  EXPECT_EQ(countWarnings(), 1);
}

TEST_F(InstallerTest, RunWithoutOthersSaysNothingOfWaiting) {
  proves("LOCK-1");
  EXPECT_EQ(run(), 0);

  EXPECT_THAT(linesAt(LogLevel::notice), Not(Contains(HasSubstr("waiting"))));
}

TEST_F(InstallerTest, InstanceThatCannotBeLockedIsLeftAlone) {
  proves("LOCK-8");
  for (const int error : {EIO, EMFILE, ENOMEM}) {
    const auto before = snapshotOf(_sandbox.path("Applications"));
    _sandbox.clearLog();
    _sandbox.files().failLocking(error, home());
    _sandbox.processes().add(destination() + "/Quillmere.app/x");

    EXPECT_EQ(run(), 1);

    EXPECT_THAT(TreeDiff(before, snapshotOf(_sandbox.path("Applications"))).lines(), IsEmpty());
    EXPECT_THAT(linesAt(LogLevel::error),
                ElementsAre(StartsWith("\"" + home() + "\" cannot be locked: ")));
    EXPECT_EQ(record(), code(0, {}));
    EXPECT_FALSE(hasMarker());
    EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  }
}

TEST_F(InstallerTest, InstanceWithoutLocksIsInstalledInto) {
  proves("LOCK-8");
  _sandbox.files().failLocking(EOPNOTSUPP);

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(linesAt(LogLevel::warning),
              Contains("\"" + home() +
                       "\" cannot be locked: Operation not supported. Nothing keeps other "
                       "installations from this instance."));
}

TEST_F(InstallerTest, OfAClosedInstanceTheChecksTell) {
  proves("LOCK-8");
  _sandbox.files().failLocking(EACCES);
  _sandbox.processes().add(destination() + "/Quillmere.app/x");

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(6, {"Quillmere"}));
  EXPECT_TRUE(hasMarker());
  EXPECT_THAT(runs(), SizeIs(2));
}

TEST_F(InstallerTest, NothingIsInstalledIntoAClosedInstance) {
  proves("LOCK-8");
  _sandbox.files().failLocking(EACCES);

  EXPECT_EQ(run(), 1);

  EXPECT_EQ(record(), code(0, {}));
  EXPECT_FALSE(hasMarker());
  EXPECT_THAT(runs(), IsEmpty());
}

// --- What a run does first, for both homes -------------------------------------------------------

// The workflow's home is not the registered one.
class TwoHomesTest : public InstallerTest {
 protected:
  TwoHomesTest() {
    describe("allowMultiInstance", false);
    registerBundle(_sandbox.path("Applications/Other.app"));
    _sandbox.write(registered("deploy/install.xml"), "<m/>");
  }

  static std::string registered(const std::string& name) {
    return "Applications/Other.app/Contents/MacOS/rcp/" + name;
  }
};

TEST_F(TwoHomesTest, LauncherLeftBehindInEitherIsWaitedFor) {
  proves("LOCK-7");
  for (const std::string& home : {home(), _sandbox.path(registered(""))}) {
    std::vector<std::string> line = {path::appendingComponent(home, "rcplauncher")};
    for (const std::string& argument :
         ProvisioningCommand::arguments(ProvisioningCommand::kUpdate, "en_US", "/data"))
      line.push_back(argument);
    _sandbox.clearLog();
    _sandbox.processes().addCommandLine(line);
    _sandbox.clock().onPause([this] { _sandbox.processes().clear(); });

    EXPECT_EQ(run(), 0);

    EXPECT_THAT(linesAt(LogLevel::notice),
                Contains(StartsWith("A launcher that an earlier installation left behind")))
        << home;
  }
}

TEST_F(TwoHomesTest, LeftOversOfBothAreRemoved) {
  proves("AGAIN-1");
  _sandbox.write(inHome("deploy/.hotfix-1"), "x");
  _sandbox.write(registered("deploy/.hotfix-2"), "x");

  EXPECT_EQ(run(), 0);

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/.hotfix-1")));
  EXPECT_FALSE(_sandbox.exists(registered("deploy/.hotfix-2")));
}

TEST_F(TwoHomesTest, WhereOneCannotBeLockedBothAreLeftAlone) {
  proves("LOCK-8");
  _sandbox.write(inHome("deploy/.hotfix-1"), "x");
  const auto before = snapshotOf(_sandbox.path("Applications"));
  for (const std::string& home :
       {home(), path::deletingLastComponent(_sandbox.path(registered("x")))}) {
    _sandbox.files().failLocking(EIO, home);

    EXPECT_EQ(run(), 1);

    EXPECT_THAT(linesAt(LogLevel::error),
                Contains(StartsWith("\"" + home + "\" cannot be locked: ")));
    EXPECT_THAT(TreeDiff(before, snapshotOf(_sandbox.path("Applications"))).lines(), IsEmpty());
    EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  }
  _sandbox.remove(inHome("deploy/.hotfix-1"));
}

TEST_F(InstallerTest, LeftOversStayWhereNoLockTellsThatNobodyMakesThem) {
  proves("AGAIN-2");
  _sandbox.write(inHome("deploy/.hotfix-1"), "in the making");
  _sandbox.files().failLocking(ENOLCK);

  EXPECT_EQ(run(), 0);

  EXPECT_TRUE(_sandbox.exists(inHome("deploy/.hotfix-1")));
  _sandbox.remove(inHome("deploy/.hotfix-1"));
}

TEST_F(TwoHomesTest, BundleOfTheWorkflowIsOpenedOnce) {
  proves("FILES-23");
  const std::string bundle = _sandbox.path(kBundle);
  const std::string elsewhere = _sandbox.makeFolder("elsewhere");
  _sandbox.write("elsewhere/Contents/MacOS/rcp/plugin_customization.ini", "guarded=1\n");
  const auto before = snapshotOf(elsewhere);
  _sandbox.children().onStart([&](const Command&) {
    if (!_sandbox.exists(bundle + ".old")) {
      std::filesystem::rename(bundle, bundle + ".old");
      _sandbox.makeLink(bundle, elsewhere);
    }
    _sandbox.write(bundle + ".old/Contents/MacOS/.provisioning_rc", "rc=0\n");
  });

  EXPECT_EQ(run(), 0);

  EXPECT_THAT(TreeDiff(before, snapshotOf(elsewhere)).lines(), IsEmpty());
  EXPECT_TRUE(_sandbox.exists(bundle + ".old/Contents/MacOS/rcp/deploy/install.update.xml"));
}

// --- Memory --------------------------------------------------------------------------------------

class MemoryEndTest : public InstallerTest {
 protected:
  // What a run tells on standard error in which memory ends with the launcher's first start.
  std::string errorsOfARun() {
    _sandbox.children().onStart([](const Command&) { throw std::bad_alloc(); });
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(run(), 1);
    return ::testing::internal::GetCapturedStderr();
  }

  static constexpr const char* kLine =
      "There is not enough memory to go on. The installation ends here.";
};

TEST_F(MemoryEndTest, IsTheLastLineOfTheTrace) {
  proves("MEMORY-2");
  EXPECT_EQ(errorsOfARun(), "");

  EXPECT_THAT(_sandbox.read(_sandbox.paths().traceFile), EndsWith(std::string(kLine) + "\n"));
}

TEST_F(MemoryEndTest, IsNoLackAtTheBeginningWhereTheRunHasNoTrace) {
  proves("MEMORY-2");
  _sandbox.makeFolder(_sandbox.paths().traceFile);

  EXPECT_EQ(errorsOfARun(), "HotfixInstaller: " + std::string(kLine) + "\n");

  EXPECT_THAT(linesAt(LogLevel::error), Contains(kLine));
}

class ErrorStatusTest : public InstallerTest {};

TEST_F(ErrorStatusTest, SuccessChangesNothingAtAll) {
  proves("MARKER-3");
  setHotfixErrorStatus(true);
  EXPECT_FALSE(hasMarker());

  _sandbox.write(_sandbox.paths().errorMarker, "old");
  setHotfixErrorStatus(true);

  EXPECT_EQ(_sandbox.read(_sandbox.paths().errorMarker), "old");
}

TEST_F(ErrorStatusTest, FailureReplacesAnOldMarkerAndIsOpenToEverybody) {
  _sandbox.write(_sandbox.paths().errorMarker, "old", 0600);

  setHotfixErrorStatus(false);

  EXPECT_EQ(_sandbox.read(_sandbox.paths().errorMarker), "");
  EXPECT_EQ(_sandbox.mode(_sandbox.paths().errorMarker), 0777U);
}

TEST_F(ErrorStatusTest, MarkerIsMadeForAnUnknownUserToo) {
  _sandbox.users().variables["USER"] = "nobody-knows";

  setHotfixErrorStatus(false);

  EXPECT_EQ(_sandbox.read(_sandbox.paths().errorMarker), "");
  EXPECT_EQ(_sandbox.mode(_sandbox.paths().errorMarker), 0777U);
}

TEST_F(ErrorStatusTest, MarkerBelongsToTheLoginUserAndAdminWhenUserIsUnset) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  _sandbox.users().variables.erase("USER");
  _sandbox.users().effectiveUser = 4711;
  _sandbox.users().userList = {{"login", 4711, 4712, "/"}};
  _sandbox.users().groups = {{"admin", 4713}};

  setHotfixErrorStatus(false);

  struct stat status {};
  ASSERT_EQ(stat(_sandbox.paths().errorMarker.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 4711U);
  EXPECT_EQ(status.st_gid, 4713U);
}

TEST_F(ErrorStatusTest, MarkerBelongsToRootWithoutAnyUserName) {
  proves("MARKER-2");
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  _sandbox.users().variables.erase("USER");
  _sandbox.users().effectiveUser = 12345;
  _sandbox.users().userList = {{"root", 4711, 4712, "/"}};
  _sandbox.users().groups.clear();

  setHotfixErrorStatus(false);

  struct stat status {};
  ASSERT_EQ(stat(_sandbox.paths().errorMarker.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 4711U);
  EXPECT_EQ(status.st_gid, 4712U);
}

}  // namespace
}  // namespace installer::test
