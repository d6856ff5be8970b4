#include <gmock/gmock.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include "ctl/ControlTest.h"
#include "ctl/Schema.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* kCompleted = "The provisioning operations have completed successfully.\n";

// A manifest with one feature.
std::string manifestOf(const std::string& action) {
  std::string text = kSimpleManifest;
  const std::string place = "<feature ";
  return text.replace(text.find(place), place.size(), place + "action=\"" + action + "\" ");
}

// What removes a hotfix whose removal the test does not look at otherwise is the installer: both
// must do the same.
class RemoveTest : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    recordHotfix("1.4");
    _sandbox.writeFile(uninstallManifest(), manifestOf("uninstall"));
  }

  std::string uninstallManifest() const { return _instance.deploy("uninstall.hotfix.xml"); }
  std::string updateManifest() const { return _instance.deploy("install.update.xml"); }

  RunResult remove(const std::vector<std::string>& options = {}, const RunOptions& run = {}) {
    std::vector<std::string> all = {"remove", _instance.bundle};
    all.insert(all.end(), options.begin(), options.end());
    return control(all, run);
  }
  json told(int status, std::vector<std::string> options = {}, const RunOptions& run = {}) {
    options.insert(options.begin(), "--json");
    const RunResult result = remove(options, run);
    EXPECT_EQ(status, result.status) << result.out;
    EXPECT_EQ("", result.err);
    json answer = ctl::test::judged(result.out, "remove-1");
    EXPECT_EQ(status, answer.at("status"));
    return answer;
  }
  std::vector<ChildRecord> launches() const { return _sandbox.children("rcplauncher"); }

  // Everything that a removal could change.
  std::vector<std::string> places() const {
    std::vector<std::string> all;
    for (const char* folder : {"/Applications", "/Library", "/Users", "/Volumes", "/tmp"})
      for (const auto& [name, item] : _sandbox.tree(folder))
        all.push_back(std::string(folder) + "/" + name + " " + item);
    return all;
  }
  // One line, that status, and nothing is changed or started.
  void refuses(int status, const std::string& line, const std::vector<std::string>& options = {},
               const RunOptions& run = {}) {
    const auto before = places();
    const auto children = _sandbox.children().size();

    const RunResult result = remove(options, run);

    EXPECT_EQ(status, result.status);
    EXPECT_EQ("", result.out);
    EXPECT_THAT(result.err, AllOf(StartsWith("hotfixctl: "), HasSubstr(line)));
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n'));
    EXPECT_EQ(before, places());
    EXPECT_EQ(children, _sandbox.children().size());
  }
  // An installation that failed leaves no version; a package without an identifier no more than
  // one.
  void keepOfTheRecord(bool version) {
    std::vector<std::pair<std::string, ListValue>> kept = {{"version", ListValue::string("8.5.2")}};
    if (version) kept.emplace_back("hotfixVersion", ListValue::string("1.4"));
    writeInfo(kept);
  }
  // Killed when it is about to give an entry that name.
  static RunOptions killedAt(const char* name) {
    RunOptions options;
    options.set("LD_PRELOAD", CliSandbox::kKillAtName);
    options.set("HOTFIX_KILL_AT_NAME", name);
    // The sanitizer of a build with one wants to be the first library that is loaded.
    options.set("ASAN_OPTIONS", "verify_asan_link_order=0");
    return options;
  }
  void failLauncher() {
    _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=13\n"));
  }
};

// --- The removal ---------------------------------------------------------------------------------

TEST_F(RemoveTest, TheRecordedHotfixIsRemoved) {
  proves("UNDO-1");
  const json answer = told(0);

  EXPECT_EQ("removed", answer.at("outcome"));
  EXPECT_EQ("1.4", answer.at("hotfix").at("version"));
  EXPECT_EQ("com.kiv.hotfix.old", answer.at("hotfix").at("identifier"));
  EXPECT_TRUE(answer.at("after").at("hotfix").is_null());
  EXPECT_EQ("agrees", answer.at("agreement"));
  EXPECT_EQ(_instance.bundle, answer.at("bundle"));
  EXPECT_EQ(_instance.home(), answer.at("rcpHome"));
  EXPECT_EQ(_instance.data(), answer.at("rcpData"));
  EXPECT_EQ(kCompleted, answer.at("output"));
  EXPECT_TRUE(answer.at("reason").is_null());
  EXPECT_THAT(answer.at("errors"), IsEmpty());
  EXPECT_THAT(listAt(_instance.info()).keys(), ElementsAre("version"));
  EXPECT_FALSE(_sandbox.exists(uninstallManifest()));
  EXPECT_FALSE(_sandbox.exists(_instance.result()));
  EXPECT_EQ(manifestOf("uninstall"), _sandbox.readFile(updateManifest()));
  EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty());
}

TEST_F(RemoveTest, TheStepsAreThoseOfTheInstaller) {
  proves("UNDO-1");
  _sandbox.installChild("/usr/sbin/pkgutil");
  const ChildScript watching = ChildScript()
                                   .snapshot(updateManifest())
                                   .snapshot(_instance.info())
                                   .write(_instance.result(), "rc=0\n");
  _sandbox.script("rcplauncher", watching);
  _sandbox.script("pkgutil", ChildScript().snapshot(_instance.info()));

  ASSERT_EQ(0, remove({"-rcpdata", "/Users/alice/ws"}).status);

  const auto children = _sandbox.children();
  ASSERT_THAT(children, SizeIs(3));
  EXPECT_EQ("pkgutil", children[2].role);
  EXPECT_THAT(children[2].arguments, ElementsAre("--forget", "com.kiv.hotfix.old"));
  EXPECT_EQ(
      "com.kiv.hotfix.old",
      readXmlList(*children[2].fileAt(_instance.info()))->stringAt("installedHotfixBundleID"));
  EXPECT_EQ(children[0].arguments, children[1].arguments);
  EXPECT_THAT(children[0].arguments,
              AllOf(Contains("update"), Contains("-rcpLauncherWait"), Contains("/Users/alice/ws")));
  EXPECT_EQ(manifestOf("uninstall"), children[0].fileAt(updateManifest()));
  EXPECT_EQ("1.4", readXmlList(*children[1].fileAt(_instance.info()))->stringAt("hotfixVersion"));
  EXPECT_TRUE(_sandbox.exists(_instance.deploy("install.0101200000.xml")));
}

TEST_F(RemoveTest, ChildrenHaveNoneOfOurDescriptorsAndDefaultSignals) {
  proves("UNDO-1");
  ASSERT_EQ(0, remove({"--trace", "/tmp/trace"}).status);

  for (const ChildRecord& child : launches()) {
    EXPECT_THAT(child.descriptors, SizeIs(3));
    EXPECT_EQ("/dev/null", child.descriptors.at(1));
    EXPECT_THAT(child.ignoredSignals, IsEmpty());
    EXPECT_THAT(child.blockedSignals, IsEmpty());
  }
}

TEST_F(RemoveTest, TheFilesAreTheUsersAfterwards) {
  proves("UNDO-1");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.writeFile("/Users/alice/ws/log.txt", "x", 0600);
  ASSERT_EQ(0, remove({"--rcpdata", "/Users/alice/ws"}).status);

  for (const std::string& file :
       {_instance.info(), updateManifest(), _instance.launcher(), _instance.shared() + "/lib.txt",
        std::string("/Users/alice/ws/log.txt")}) {
    const Ownership found = _sandbox.ownership(file);
    EXPECT_EQ(CliSandbox::kAlice, found.owner) << file;
    EXPECT_EQ(CliSandbox::kAdmin, found.group) << file;
    EXPECT_EQ(0775u, found.mode) << file;
  }
}

// The one who works by hand has root in USER, or nobody.
TEST_F(RemoveTest, RootsRemovalHandsTheFilesToWhoHadThem) {
  proves("UNDO-9");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  for (const char* user : {"root", "", "nobody-known"}) {
    recordHotfix("1.4");
    _sandbox.giveTo(_instance.home() + "/deploy", CliSandbox::kBob, CliSandbox::kAdmin);
    RunOptions options;
    *user == '\0' ? options.unset("USER") : options.set("USER", user);

    ASSERT_EQ(0, remove({}, options).status);

    EXPECT_EQ(CliSandbox::kBob, _sandbox.ownership(_instance.info()).owner) << user;
  }
  recordHotfix("1.4");
  ASSERT_EQ(0, remove().status);
  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(_instance.info()).owner) << "USER counts";
}

TEST_F(RemoveTest, AHomeMeansItsBundle) {
  proves("UNDO-1");
  const RunResult result = control({"remove", _instance.home() + "/"});

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, StartsWith(_instance.bundle + "\n"));
}

TEST_F(RemoveTest, WhatAKilledRunLeftGoes) {
  _sandbox.writeFile(_instance.home() + "/eclipse/.hotfix-1", "half");

  ASSERT_EQ(0, remove().status);

  EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty());
}

TEST_F(RemoveTest, ErrorRecordMarkerAndTheLastTraceStay) {
  proves("UNDO-10");
  for (const char* file : {kPasteboard, kMarker, kTrace}) _sandbox.writeFile(file, "as it was");

  ASSERT_EQ(0, remove().status);

  for (const char* file : {kPasteboard, kMarker, kTrace})
    EXPECT_EQ("as it was", _sandbox.readFile(file)) << file;
}

TEST_F(RemoveTest, TheLogReceivesItsLines) {
  proves("UNDO-10");
  RunOptions options;
  options.systemLog = true;

  const RunResult result = remove({"--trace", "/tmp/own.log"}, options);

  ASSERT_EQ(0, result.status);
  EXPECT_THAT(result.systemLog,
              Contains(HasSubstr("Launch platform to uninstall provisioned features...")));
  EXPECT_THAT(_sandbox.readFile("/tmp/own.log").value_or(""),
              HasSubstr("<Info>: Launch platform to uninstall provisioned features...\n"));
}

TEST_F(RemoveTest, WithoutItsTraceNothingIsBegun) {
  proves("UNDO-10");
  refuses(74, "cannot be written; nothing was changed", {"--trace", "/missing/trace"});
}

// --- Who is in the way ---------------------------------------------------------------------------

TEST_F(RemoveTest, ARunAtWorkIsNotWaitedFor) {
  proves("UNDO-2");
  _sandbox.script("rcplauncher", ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return launches().size() == 1; }));

  refuses(6, "A run is at work on the instance. Run it again when that has ended.");
  EXPECT_EQ("at-work", told(6).at("outcome"));
  EXPECT_EQ(6, remove({"--force"}).status);

  running.kill();
}

TEST_F(RemoveTest, AnInstallerWaitsForARemoval) {
  proves("UNDO-2");
  _sandbox.script("rcplauncher", 1, ChildScript().await("/tmp/go"));
  RunOptions options;
  options.program = CliSandbox::kControl;
  RunningProgram removal = _sandbox.start({"remove", _instance.bundle}, options);
  ASSERT_TRUE(comesTrue([&] { return launches().size() == 1; }));
  RunningProgram installer = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] {
    return _sandbox.readFile(kTrace).value_or("").find("Another installation is at work") !=
           std::string::npos;
  }));
  EXPECT_THAT(launches(), SizeIs(1));
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, removal.finish().status);
  EXPECT_EQ(0, installer.finish().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_THAT(launches(), SizeIs(4)) << "nothing was left for the installer to remove";
}

TEST_F(RemoveTest, ALauncherThatWasLeftBehindIsNotWaitedFor) {
  proves("UNDO-2");
  RunOptions options;
  _sandbox.script("rcplauncher", ChildScript().await("/tmp/go"));
  options.background = {{_instance.launcher(), "-rcpLauncherWait", "-provManifest", "-noSplash",
                         "-provisioningOperation", "update"}};
  options.awaited = "/control/records/0001.rcplauncher";

  const RunResult result = remove({}, options);

  EXPECT_EQ(6, result.status);
  EXPECT_THAT(result.err, HasSubstr("A launcher that an earlier run left behind is at work"));
  EXPECT_EQ("1.4", recorded("hotfixVersion"));
}

TEST_F(RemoveTest, ARunningApplicationKeepsItsHotfix) {
  proves("UNDO-3");
  const std::string application = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(application);
  RunOptions options;
  options.background = {{application, "--idle"}};

  const RunResult result = remove({"--force"}, options);

  EXPECT_EQ(5, result.status);
  EXPECT_EQ("hotfixctl: The application is running: \"" + _instance.bundle +
                "\". Quit it, for every user, and run this again.\n",
            result.err);
  EXPECT_EQ("1.4", recorded("hotfixVersion"));
  EXPECT_THAT(launches(), IsEmpty());
}

TEST_F(RemoveTest, AnotherUsersInstanceIsLeftAlone) {
  proves("UNDO-4");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  RunOptions options;
  options.user = CliSandbox::kAlice;

  refuses(9, "The instance belongs to another user. Run it as root.", {}, options);

  for (const auto& [name, item] : _sandbox.tree("/Applications"))
    _sandbox.giveTo("/Applications/" + name, CliSandbox::kAlice, CliSandbox::kAlice);
  EXPECT_EQ(0, remove({}, options).status);
}

// --- Where there is nothing to remove ------------------------------------------------------------

TEST_F(RemoveTest, WithoutAHotfixThereIsNothingToDo) {
  proves("UNDO-4");
  ASSERT_EQ(0, remove().status);
  refuses(1, "No hotfix is installed.");
  refuses(1, "No hotfix is installed.", {"--force"});
  EXPECT_EQ("nothing-installed", told(1).at("outcome"));
}

TEST_F(RemoveTest, WithoutAnInstanceItIsSaid) {
  proves("UNDO-4");
  for (const std::string& place : {std::string("/missing"), std::string("/missing/X.app"),
                                   std::string("/tmp"), _instance.info()}) {
    const RunResult result = control({"remove", place});
    EXPECT_EQ(3, result.status) << place;
    EXPECT_THAT(result.err, StartsWith("hotfixctl: No instance is at \""));
  }
  EXPECT_FALSE(_sandbox.exists("/missing"));
  _sandbox.remove(_instance.deploy("install.xml"));
  EXPECT_EQ("no-instance", told(3).at("outcome"));
}

TEST_F(RemoveTest, ARecordThatCannotBeReadIsLeftAlone) {
  proves("UNDO-4");
  _sandbox.writeFile(_instance.info(), "no list");

  refuses(4, "installInfo.plist");
  refuses(4, "installInfo.plist", {"--force"});
}

TEST_F(RemoveTest, AnInstanceThatIsKeptFromTheCallerIsNotReadable) {
  proves("UNDO-4");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.setMode(_instance.bundle, 0700);
  RunOptions options;
  options.user = CliSandbox::kAlice;

  EXPECT_EQ(4, remove({}, options).status);
}

TEST_F(RemoveTest, TheCommandLineIsChecked) {
  EXPECT_EQ(64, control({"remove"}).status);
  EXPECT_EQ(64, control({"remove", "a", "b"}).status);
  EXPECT_THAT(control({"remove", "a", "--forse"}).err, HasSubstr("did you mean \"--force\"?"));
}

// --- Where record and instance disagree ----------------------------------------------------------

TEST_F(RemoveTest, AnUnrecordedHotfixAsksForForce) {
  proves("UNDO-5");
  writeInfo({{"version", ListValue::string("8.5.2")}});

  refuses(2, "No hotfix is recorded, and there is an uninstall manifest, \"" + uninstallManifest() +
                 "\". With --force the launcher takes out the features that it names.");
  EXPECT_EQ("not-recorded", told(2).at("agreement"));

  const json answer = told(0, {"--force"});
  EXPECT_EQ("removed", answer.at("outcome"));
  EXPECT_TRUE(answer.at("hotfix").is_null());
  EXPECT_THAT(launches(), SizeIs(2));
  EXPECT_FALSE(_sandbox.exists(uninstallManifest()));
}

TEST_F(RemoveTest, ARecordWithoutItsManifestAsksForForce) {
  proves("UNDO-5");
  _sandbox.installChild("/usr/sbin/pkgutil");
  _sandbox.remove(uninstallManifest());
  _sandbox.writeFile(updateManifest(), manifestOf("install"));

  refuses(2, "is missing. With --force the record of the hotfix is deleted, and its features stay");
  EXPECT_EQ("manifest-missing", told(2).at("agreement"));

  const json answer = told(0, {"--force"});
  EXPECT_EQ("forgotten", answer.at("outcome"));
  EXPECT_TRUE(answer.at("after").at("hotfix").is_null());
  EXPECT_THAT(launches(), IsEmpty());
  EXPECT_THAT(_sandbox.children("pkgutil"), SizeIs(1));
  EXPECT_THAT(listAt(_instance.info()).keys(), ElementsAre("version"));
  EXPECT_THAT(answer.at("stays"), IsEmpty());
}

TEST_F(RemoveTest, ADamagedManifestAsksForForce) {
  proves("UNDO-5");
  _sandbox.writeFile(uninstallManifest(), "<manifest>");

  refuses(2, "cannot be read as a manifest. With --force the manifest and the record");
  EXPECT_EQ("manifest-damaged", told(2).at("agreement"));

  const RunResult result = remove({"--force"});
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, HasSubstr("the record of it was deleted; what it installed stays\n"));
  EXPECT_FALSE(_sandbox.exists(uninstallManifest()));
  EXPECT_EQ(1, remove().status);
}

TEST_F(RemoveTest, ARecordThatCannotBeDeletedIsAFailure) {
  proves("UNDO-6");
  _sandbox.remove(uninstallManifest());
  _sandbox.makeReadOnly(_instance.home());

  const json answer = told(7, {"--force"});

  EXPECT_EQ("The hotfix's record, or its manifest, could not be deleted.", answer.at("reason"));
  EXPECT_EQ("1.4", answer.at("after").at("hotfix").at("version"));
  EXPECT_THAT(answer.at("errors"), Contains(HasSubstr("installInfo.plist")));
}

// Whoever can write in the instance must not turn root's eyes and hands elsewhere.
TEST_F(RemoveTest, AManifestBehindALinkOutOfTheBundleIsNone) {
  proves("UNDO-5");
  _sandbox.writeFile("/opt/planted.xml", manifestOf("uninstall"));
  _sandbox.remove(uninstallManifest());
  _sandbox.makeLink(uninstallManifest(), "/opt/planted.xml");

  EXPECT_EQ("manifest-damaged", told(2).at("agreement"));

  EXPECT_THAT(launches(), IsEmpty());
  EXPECT_FALSE(_sandbox.exists(updateManifest()));
}

// --- Failures ------------------------------------------------------------------------------------

TEST_F(RemoveTest, AFailedRemovalIsToldAndCanBeMadeAgain) {
  proves("UNDO-6");
  failLauncher();

  const json answer = told(7);

  EXPECT_EQ("failed", answer.at("outcome"));
  EXPECT_EQ("The launcher answered 13.", answer.at("reason"));
  EXPECT_EQ("13", answer.at("after").at("launcher"));
  EXPECT_TRUE(answer.at("after").at("hotfix").is_null()) << "it is recorded no more";
  EXPECT_EQ("com.kiv.hotfix.old", recorded("installedHotfixBundleID"));
  EXPECT_THAT(answer.at("errors"), Contains(HasSubstr("The provisioning answered 13")));

  refuses(2, "A removal has begun and did not succeed; its manifest is \"" + updateManifest() +
                 "\" by now. With --force that removal is made again.");
  _sandbox.script("rcplauncher",
                  ChildScript().snapshot(updateManifest()).write(_instance.result(), "rc=2\n"));
  EXPECT_EQ("removed", told(0, {"--force"}).at("outcome"));
  EXPECT_EQ(manifestOf("uninstall"), launches().back().fileAt(updateManifest()));
  EXPECT_THAT(listAt(_instance.info()).keys(), ElementsAre("version"));
  EXPECT_EQ(1, remove().status);
}

// Nothing but the manifest told of the hotfix, and that is the launcher's by then.
TEST_F(RemoveTest, AFailedRemovalOfWhatIsHardlyRecordedCanBeMadeAgain) {
  proves("UNDO-6");
  for (const bool hasVersion : {false, true}) {
    keepOfTheRecord(hasVersion);
    _sandbox.writeFile(uninstallManifest(), manifestOf("uninstall"));
    failLauncher();
    ASSERT_EQ(7, remove({"--force"}).status);
    EXPECT_FALSE(_sandbox.exists(uninstallManifest()));

    refuses(2, "A removal has begun and did not succeed");

    _sandbox.script("rcplauncher",
                    ChildScript().snapshot(updateManifest()).write(_instance.result(), "rc=0\n"));
    EXPECT_EQ("removed", told(0, {"--force"}).at("outcome"));
    EXPECT_EQ(manifestOf("uninstall"), launches().back().fileAt(updateManifest()));
    EXPECT_THAT(listAt(_instance.info()).keys(), ElementsAre("version"));
    EXPECT_EQ(1, remove({"--force"}).status);
  }
}

TEST_F(RemoveTest, AFailedRemovalStillHandsTheFilesBack) {
  proves("UNDO-6");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  failLauncher();

  const RunResult result = remove();

  EXPECT_EQ(7, result.status);
  EXPECT_THAT(result.out, AllOf(HasSubstr("\n  Result      The launcher answered 13.\n"),
                                HasSubstr("\n  Now         none is recorded\n"),
                                HasSubstr("\n  Remedy      Its logs")));
  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(updateManifest()).owner);
}

TEST_F(RemoveTest, AMissingLauncherLeavesNoAnswer) {
  proves("UNDO-6");
  _sandbox.remove(_instance.launcher());

  EXPECT_EQ("The launcher left no answer.", told(7).at("reason"));
}

TEST_F(RemoveTest, AnInstanceThatCannotBeWrittenKeepsItsHotfix) {
  proves("UNDO-6");
  _sandbox.makeReadOnly(_instance.home());

  const json answer = told(7);

  EXPECT_EQ("The launcher could not be given the uninstall manifest.", answer.at("reason"));
  EXPECT_EQ("1.4", answer.at("after").at("hotfix").at("version"));
  EXPECT_THAT(launches(), IsEmpty());
}

// --- Ends on the way -----------------------------------------------------------------------------

TEST_F(RemoveTest, ASignalReachesTheLauncherAndEndsTheRemovalInOrder) {
  proves("UNDO-7");
  for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
    recordHotfix("1.4");
    _sandbox.writeFile(uninstallManifest(), manifestOf("uninstall"));
    _sandbox.script("rcplauncher", ChildScript().signalParent(number).await("/never").exit(0));
    const auto before = launches().size();

    const json answer = told(8, {}, {});

    EXPECT_EQ("interrupted", answer.at("outcome"));
    EXPECT_THAT(answer.at("reason").get<std::string>(), StartsWith("Asked to end by signal "));
    EXPECT_EQ(before + 1, launches().size()) << "the second one is not begun";
    EXPECT_EQ("1.4", answer.at("after").at("hotfix").at("version"));
    EXPECT_THAT(answer.at("remedy").get<std::string>(),
                HasSubstr("With --force that removal is made again."));
    EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty());
  }
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=0\n"));
  EXPECT_EQ(2, remove().status);
  EXPECT_EQ("removed", told(0, {"--force"}).at("outcome"));
}

// Each file that a removal writes, and what it then takes to end it.
TEST_F(RemoveTest, ARemovalThatWasKilledCanBeTakenUp) {
  proves("UNDO-7");
  for (const char* name : {"install.update.xml", "install.0101200000.xml", "rcplauncher.properties",
                           "installInfo.plist"}) {
    recordHotfix("1.4");
    _sandbox.writeFile(uninstallManifest(), manifestOf("uninstall"));
    _sandbox.remove(_instance.deploy("install.0101200000.xml"));
    _sandbox.writeFile(_instance.launcherProperties(),
                       "provisioning.manifest.version=0101200000\n");

    ASSERT_EQ(128 + SIGKILL, remove({}, killedAt(name)).status) << name;

    const int again = remove().status;
    EXPECT_TRUE(again == 0 || again == 2) << name << " " << again;
    if (again == 2) {
      EXPECT_EQ("removed", told(0, {"--force"}).at("outcome")) << name;
    }
    EXPECT_THAT(listAt(_instance.info()).keys(), ElementsAre("version")) << name;
    EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty()) << name;
  }
}

TEST_F(RemoveTest, ARemovalOfWhatIsHardlyRecordedCanBeTakenUpAfterAKill) {
  proves("UNDO-7");
  for (const bool hasVersion : {false, true}) {
    keepOfTheRecord(hasVersion);
    _sandbox.writeFile(uninstallManifest(), manifestOf("uninstall"));
    _sandbox.remove(_instance.deploy("install.0101200000.xml"));
    _sandbox.writeFile(_instance.launcherProperties(),
                       "provisioning.manifest.version=0101200000\n");

    ASSERT_EQ(128 + SIGKILL, remove({"--force"}, killedAt("install.0101200000.xml")).status);

    EXPECT_FALSE(_sandbox.exists(uninstallManifest()));
    EXPECT_EQ(2, remove().status);
    EXPECT_EQ("removed", told(0, {"--force"}).at("outcome"));
    EXPECT_THAT(listAt(_instance.info()).keys(), ElementsAre("version"));
  }
}

// Whoever is killed before the last record has gone is told to begin again.
TEST_F(RemoveTest, TheFilesAreHandedOverBeforeTheLastRecordGoes) {
  proves("UNDO-1", "UNDO-7");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  RunOptions options = killedAt("installInfo.plist");
  options.set("HOTFIX_KILL_AT_TIME", "2");  // the first one deletes the version

  ASSERT_EQ(128 + SIGKILL, remove({}, options).status);

  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
  EXPECT_EQ("com.kiv.hotfix.old", recorded("installedHotfixBundleID"));
  for (const std::string& file : {updateManifest(), _instance.shared() + "/lib.txt"})
    EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(file).owner) << file;
  EXPECT_EQ(2, remove().status);
  EXPECT_EQ("removed", told(0, {"--force"}).at("outcome"));
}

// --- What stays ----------------------------------------------------------------------------------

TEST_F(RemoveTest, WhatStaysIsTold) {
  proves("UNDO-8");
  _sandbox.writeFile(_instance.deploy("extras/notes.txt"), "x");
  _sandbox.writeFile(_instance.deploy(".KeyStore.hotfix"), "x");
  const std::string base = _instance.home() + "/eclipse/plugins/com.kiv.rcp.base_6.2.3";
  _sandbox.writeFile(base + "/plugin_customization.ini", "a=1\n");

  const json stays = told(0).at("stays");

  ASSERT_THAT(stays, SizeIs(3));
  EXPECT_EQ("extras", stays[0].at("name"));
  EXPECT_EQ(json::array({_instance.deploy("extras/notes.txt")}), stays[0].at("paths"));
  EXPECT_EQ("settings", stays[1].at("name"));
  EXPECT_EQ(json::array({_instance.customization(), base + "/plugin_customization.ini"}),
            stays[1].at("paths"));
  EXPECT_EQ("key-stores", stays[2].at("name"));
  EXPECT_EQ(json::array({_instance.deploy(".KeyStore.hotfix"), _instance.deploy(".keystore")}),
            stays[2].at("paths"));
}

TEST_F(RemoveTest, KeyStoresThatAreGoneAreTold) {
  proves("UNDO-8");
  _sandbox.remove(_instance.deploy(".keystore"));
  _sandbox.remove(_instance.customization());

  const json stays = told(0).at("stays");

  ASSERT_THAT(stays, SizeIs(1));
  EXPECT_EQ("There are no key stores: those that were there before the hotfix, if any, are gone.",
            stays[0].at("text"));
}

TEST_F(RemoveTest, AFeatureThatTheLauncherLeftIsTold) {
  proves("UNDO-8");
  _sandbox.writeFile(_instance.deploy("install.xml"), kSimpleManifest);

  const json last = told(0).at("stays").back();

  EXPECT_EQ("features", last.at("name"));
  EXPECT_EQ("The instance's manifest still names what was to go: com.kiv.fix 1.", last.at("text"));
  EXPECT_EQ(json::array({_instance.deploy("install.xml")}), last.at("paths"));
}

TEST_F(RemoveTest, TheScreenTellsResultRemaindersAndWhatToDo) {
  proves("UNDO-8");
  const RunResult result = remove();

  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out,
              AllOf(StartsWith(_instance.bundle + "\n  Hotfix      1.4 (com.kiv.hotfix.old)\n"
                                                  "  Result      the hotfix was removed\n"
                                                  "  Now         none is recorded\n\nWhat stays\n"),
                    HasSubstr("\n    " + _instance.customization() + "\n"),
                    HasSubstr("\nWhat to do\n  To go back to an older hotfix, install its package"),
                    Not(HasSubstr(kCompleted))));
}

TEST_F(RemoveTest, ControlCharactersDoNotReachTheTerminal) {
  proves("CTL-5");
  _sandbox.writeFile(_instance.deploy("extras/\x1b[2J"), "x");

  EXPECT_THAT(remove().out, AllOf(HasSubstr("extras/\\x1b[2J"), Not(HasSubstr("\x1b"))));
}

// --- The way back --------------------------------------------------------------------------------

TEST_F(RemoveTest, AnOlderPackageGoesInAfterwards) {
  proves("UNDO-11");
  recordHotfix("1.6");
  _sandbox.writeFile(uninstallManifest(), manifestOf("uninstall"));
  ASSERT_EQ(1, install().status) << "a higher one is installed";

  ASSERT_EQ(0, remove().status);

  EXPECT_EQ(0, install().status);
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ(0, control({"status"}).status);
}

}  // namespace
}  // namespace installer::cli
