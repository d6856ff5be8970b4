#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
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
using ::testing::StartsWith;

constexpr const char* kWork = "hotfixctl-rehearsal-";

// The launcher of a copy cannot write its records where those of others are: it is a script.
class RehearseTest : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    (void)control({"--version"});  // a run completes the root
    launcherDoes("echo rc=0 > \"${0%/rcp/*}/.provisioning_rc\"");
  }

  void launcherDoes(const std::string& commands) {
    _sandbox.remove(_instance.launcher());
    _sandbox.writeFile(_instance.launcher(), "#!/bin/sh\n" + commands + "\n", 0755);
  }
  std::vector<std::string> arguments(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> all = {"rehearse", _package.folder, "--instance", _instance.bundle};
    all.insert(all.end(), options.begin(), options.end());
    return all;
  }
  RunResult control(const std::vector<std::string>& arguments, RunOptions options = {}) {
    options.ownRootMount = true;
    return ControlTest::control(arguments, options);
  }
  RunResult shell(const std::string& command) {
    RunOptions options;
    options.ownRootMount = true;
    return ControlTest::shell(command, options);
  }
  RunResult rehearse(const std::vector<std::string>& options = {}, const RunOptions& run = {}) {
    return control(arguments(options), run);
  }
  json told(int status, std::vector<std::string> options = {}, const RunOptions& run = {}) {
    options.insert(options.begin(), "--json");
    const RunResult result = rehearse(options, run);
    EXPECT_EQ(status, result.status) << result.out << result.err;
    EXPECT_EQ("", result.err);
    json answer = ctl::test::judged(result.out, "rehearse-1");
    EXPECT_EQ(status, answer.at("status"));
    return answer;
  }
  static std::vector<std::string> pathsOf(const json& answer, const std::string& change) {
    std::vector<std::string> paths;
    for (const json& one : answer.at("changes"))
      if (one.at("change") == change) paths.push_back(one.at("path"));
    return paths;
  }
  static json changeOf(const json& answer, const std::string& path) {
    for (const json& one : answer.at("changes"))
      if (one.at("path") == path) return one;
    ADD_FAILURE() << path << " is not among the changes";
    return {};
  }

  // Everything of the machine that anybody could change.
  std::vector<std::string> machine() const {
    std::vector<std::string> all;
    for (const char* folder :
         {"/Applications", "/Library", "/Users", "/Volumes", "/tmp", "/etc", "/root", "/usr/sbin"})
      for (const auto& [name, item] : _sandbox.tree(folder))
        all.push_back(std::string(folder) + "/" + name + " " + item);
    return all;
  }
};

// --- What it tells -------------------------------------------------------------------------------

TEST_F(RehearseTest, AnInstallationIsRehearsed) {
  proves("REHEARSE-1");
  const json answer = told(0);

  EXPECT_EQ("installed", answer.at("outcome"));
  EXPECT_EQ(0, answer.at("installerStatus"));
  EXPECT_EQ("installed", answer.at("run").at("ending"));
  EXPECT_TRUE(answer.at("before").at("hotfix").is_null());
  EXPECT_EQ("1.5", answer.at("after").at("hotfix"));
  EXPECT_EQ("8.5.2", answer.at("after").at("applicationVersion"));
  EXPECT_EQ("6.2.3", answer.at("after").at("baseVersion"));
  EXPECT_EQ(_instance.bundle, answer.at("bundle"));
  EXPECT_THAT(pathsOf(answer, "created"),
              AllOf(Contains("Contents/MacOS/rcp/installInfo.plist"),
                    Contains("Contents/MacOS/rcp/deploy/extras/readme.txt"),
                    Contains("Contents/MacOS/.provisioning_rc")));
  EXPECT_THAT(pathsOf(answer, "replaced"), Contains("Contents/MacOS/rcp/deploy/.keystore"));
  EXPECT_TRUE(answer.at("left").is_null());
}

// What the rehearsal tells is what the run then does.
TEST_F(RehearseTest, TheRunComesOutAsRehearsed) {
  proves("REHEARSE-1");
  awaitRoomInTheMinute();
  recordHotfix("1.4");
  const auto before = _sandbox.tree(_instance.bundle);
  const json answer = told(0, {"--all"});

  const RunResult run = install();

  EXPECT_EQ(answer.at("installerStatus"), run.status);
  EXPECT_EQ(answer.at("output"), run.out + run.err);
  const auto after = _sandbox.tree(_instance.bundle);
  std::vector<std::string> changed;
  for (const auto& [name, item] : after)
    if (before.count(name) == 0 || before.at(name) != item) changed.push_back(name.substr(1));
  for (const auto& [name, item] : before)
    if (after.count(name) == 0) changed.push_back(name.substr(1));
  std::vector<std::string> rehearsed;
  for (const json& one : answer.at("changes")) rehearsed.push_back(one.at("path"));
  std::sort(changed.begin(), changed.end());
  std::sort(rehearsed.begin(), rehearsed.end());
  EXPECT_EQ(changed, rehearsed);
  for (const json& one : answer.at("changes")) {
    if (one.at("after").is_null() || one.at("after").at("kind") == "link") continue;
    const Ownership real =
        _sandbox.ownership(_instance.bundle + "/" + one.at("path").get<std::string>());
    EXPECT_EQ(one.at("after").at("owner"), real.owner) << one;
    EXPECT_EQ(one.at("after").at("group"), real.group) << one;
    EXPECT_EQ(std::stoul(one.at("after").at("mode").get<std::string>(), nullptr, 8), real.mode)
        << one;
  }
}

TEST_F(RehearseTest, ARefusedRunIsToldWithItsCause) {
  proves("REHEARSE-2");
  recordHotfix("1.6");

  const json answer = told(1);

  EXPECT_EQ("not-installed", answer.at("outcome"));
  EXPECT_EQ(1, answer.at("installerStatus"));
  EXPECT_EQ("higher-hotfix-installed", answer.at("run").at("ending"));
  EXPECT_EQ(7, answer.at("run").at("errorCode"));
  EXPECT_EQ("Higher version hotfix has been installed.", answer.at("run").at("cause"));
  EXPECT_EQ("1.6", answer.at("after").at("hotfix"));
  EXPECT_FALSE(_sandbox.exists(kMarker));
}

TEST_F(RehearseTest, AFailedProvisioningIsToldWithItsCause) {
  proves("REHEARSE-2");
  launcherDoes("echo rc=13 > \"${0%/rcp/*}/.provisioning_rc\"");

  EXPECT_EQ("provisioning-failed", told(1).at("run").at("ending"));
}

TEST_F(RehearseTest, TheLaunchersOwnChangesAreToldWithFeatures) {
  proves("REHEARSE-1");
  launcherDoes(
      "echo rc=0 > \"${0%/rcp/*}/.provisioning_rc\"; echo new > \"${0%/*}/eclipse/new\"; "
      "while read -r line; do echo \"$line\"; done < \"${0%/*}/deploy/install.update.xml\" "
      "> \"${0%/*}/deploy/install.xml\"");

  const json answer = told(0);

  EXPECT_THAT(answer.at("before").at("features"), IsEmpty());
  EXPECT_EQ(json::array({{{"id", "com.kiv.fix"}, {"version", "1"}}}),
            answer.at("after").at("features"));
  EXPECT_THAT(pathsOf(answer, "created"), Contains("Contents/MacOS/rcp/eclipse/new"));
  EXPECT_THAT(rehearse().out, HasSubstr("\nFeatures\n  + com.kiv.fix 1\n"));
}

TEST_F(RehearseTest, TextsAreComparedOnRequest) {
  proves("REHEARSE-1");
  const std::string path = "Contents/MacOS/rcp/plugin_customization.ini";

  EXPECT_EQ(0u, changeOf(told(0), path).count("difference"));
  EXPECT_THAT(changeOf(told(0, {"--diff"}), path).at("difference").get<std::string>(),
              AllOf(HasSubstr("-b=2\n"), HasSubstr("+b=3\n")));
  EXPECT_THAT(rehearse({"--diff"}).out, HasSubstr("\n    +b=3\n"));
}

TEST_F(RehearseTest, TheScreenTellsResultVersionsAndChanges) {
  proves("REHEARSE-1");
  const RunResult result = rehearse();

  EXPECT_EQ("", result.err);
  EXPECT_THAT(
      result.out,
      AllOf(StartsWith("Package         " + _package.folder + "\nInstance        " +
                       _instance.bundle + "\n"),
            HasSubstr("\nResult          the hotfix was installed\n"),
            HasSubstr("\nExit status     0\n"), HasSubstr("\n  hotfix        none -> 1.5\n"),
            HasSubstr("\n  application   8.5.2, as before\n"),
            HasSubstr("\n  base          6.2.3, as before\n"),
            HasSubstr("\n  + Contents/MacOS/rcp/installInfo.plist (file 0775 1000:80)\n"),
            HasSubstr("\n  ~ Contents/MacOS/rcp/deploy/.keystore ("), Not(HasSubstr("\n  = "))));
  EXPECT_THAT(rehearse({"--all"}).out,
              HasSubstr("\n  = Contents/MacOS/rcp/rcplauncher (file 0755"));
}

// --- The machine ---------------------------------------------------------------------------------

TEST_F(RehearseTest, TheMachineStaysAsItIs) {
  proves("REHEARSE-3");
  recordHotfix("1.4");
  registerProduct("Quillmere",
                  ListValue::dictionary({{"pathToProduct", ListValue::string(_instance.bundle)}}));
  _sandbox.writeFile(kTrace, "as it was");
  _sandbox.writeFile(kPasteboard, "as it was");
  _sandbox.writeFile("/Users/alice/ws/log", "x", 0600);
  // A launcher that writes where it pleases.
  launcherDoes(
      "echo rc=0 > \"${0%/rcp/*}/.provisioning_rc\"; for file in /tmp/x /Users/alice/x /Users/x "
      "/Library/x /etc/x /Volumes/x /Applications/x /root/x /usr/sbin/x; do echo x > $file; done");
  const auto before = machine();
  struct stat then {};
  struct stat now {};
  ASSERT_EQ(0, stat(_sandbox.host(_instance.home()).c_str(), &then));
  RunOptions options;
  options.systemLog = true;

  const RunResult result = rehearse({"-rcpdata", "/Users/alice/ws"}, options);

  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ(before, machine());
  ASSERT_EQ(0, stat(_sandbox.host(_instance.home()).c_str(), &now));
  EXPECT_EQ(then.st_ctim.tv_nsec, now.st_ctim.tv_nsec);
  EXPECT_THAT(result.systemLog, IsEmpty());
  EXPECT_THAT(_sandbox.entriesNamed(kWork), IsEmpty());
}

// What hotfixctl itself finds wrong with a package is no line of the machine's log, and opens no
// connection to it that the run could use.
TEST_F(RehearseTest, TheSystemLogReceivesNothingOfAPackageThatCannotBeRead) {
  proves("REHEARSE-3");
  _sandbox.remove(_package.list());
  _sandbox.makeFolder(_package.list());
  RunOptions options;
  options.systemLog = true;

  const RunResult result = rehearse({}, options);

  EXPECT_EQ(1, result.status) << result.err;
  EXPECT_THAT(result.systemLog, IsEmpty());
}

// The application may run: what it writes meanwhile is none of the package's doing.
TEST_F(RehearseTest, WhatOthersChangeInTheInstanceMeanwhileIsNotTold) {
  proves("REHEARSE-1");
  const std::string data = _instance.data();
  for (const char* name : {"/changed", "/both", "/other"}) _sandbox.writeFile(data + name, "old\n");
  launcherDoes(
      "echo > /tmp/up; until [ -e /tmp/go ]; do :; done; echo run > \"${0%/*}/systemdata/both\"; "
      "echo rc=0 > \"${0%/rcp/*}/.provisioning_rc\"");
  const RunResult result = shell(std::string(CliSandbox::kControl) + " rehearse --json --diff " +
                                 _package.folder + " --instance " + _instance.bundle +
                                 " & until [ -e /tmp/hotfixctl-*/tmp/up ]; do :; done; cd " + data +
                                 "; echo app > new; echo app > changed; echo app > both; "
                                 "echo > $(echo /tmp/hotfixctl-*/tmp)/go; wait $!");

  ASSERT_EQ(0, result.status) << result.err;
  const json answer = ctl::test::judged(result.out, "rehearse-1");
  const std::string prefix = "Contents/MacOS/rcp/systemdata/";
  for (const char* change : {"created", "removed", "replaced"})
    EXPECT_THAT(pathsOf(answer, change), Not(Contains(StartsWith(prefix)))) << change;
  EXPECT_THAT(pathsOf(answer, "created"), Contains("Contents/MacOS/rcp/installInfo.plist"));
  const json meanwhile = answer.at("changedMeanwhile");
  for (const char* name : {"changed", "new", "both"})
    EXPECT_THAT(meanwhile, Contains(prefix + name));
  EXPECT_THAT(meanwhile, Not(Contains(prefix + "other")));
}

TEST_F(RehearseTest, WhatIsLeftOutIsCounted) {
  proves("REHEARSE-1");
  EXPECT_THAT(rehearse().out, Not(HasSubstr("Left out")));
  launcherDoes("echo > /tmp/up; until [ -e /tmp/go ]; do :; done");

  const RunResult result =
      shell(std::string(CliSandbox::kControl) + " rehearse " + _package.folder + " --instance " +
            _instance.bundle + " & until [ -e /tmp/hotfixctl-*/tmp/up ]; do :; done; echo app > " +
            _instance.bundle + "/new; echo > $(echo /tmp/hotfixctl-*/tmp)/go; wait $!");

  EXPECT_THAT(result.out, HasSubstr("\n  (Left out, for others have changed them in the instance "
                                    "meanwhile: 1.)\n"));
}

TEST_F(RehearseTest, ADataFolderAroundTheInstanceDoesNotHideIt) {
  proves("REHEARSE-1");
  for (const std::string& data : {std::string("/Applications"), _instance.bundle}) {
    const json answer = told(0, {"--rcpdata", data});

    EXPECT_EQ("1.5", answer.at("after").at("hotfix")) << data;
    EXPECT_THAT(pathsOf(answer, "created"), Contains("Contents/MacOS/rcp/installInfo.plist"));
  }
}

TEST_F(RehearseTest, AnotherDataFolderIsCopiedToo) {
  proves("REHEARSE-3");
  _sandbox.writeFile("/Users/alice/ws/log", "x", 0600);
  launcherDoes("echo rc=0 > \"${0%/rcp/*}/.provisioning_rc\"; echo y > /Users/alice/ws/log");

  EXPECT_EQ(0, rehearse({"-rcpdata", "/Users/alice/ws"}).status);

  EXPECT_EQ("x", _sandbox.readFile("/Users/alice/ws/log"));
}

TEST_F(RehearseTest, AnotherRegisteredInstanceIsNotTaken) {
  proves("REHEARSE-3");
  Instance other;
  other.bundle = "/Volumes/Away/Quillmere.app";
  buildInstance(other);
  _package.unset("allowMultiInstance");
  writePreferences();
  registerProduct("Quillmere",
                  ListValue::dictionary({{"pathToProduct", ListValue::string(other.bundle)}}));

  const json answer = told(0);

  EXPECT_EQ("1.5", answer.at("after").at("hotfix"));
}

TEST_F(RehearseTest, PackageAndInstanceInTheTemporaryFolderAreSeen) {
  proves("REHEARSE-3");
  _package.folder = "/tmp/HF/install/Fix.pkg";
  buildPackage(_package);
  _instance.bundle = "/tmp/apps/Quillmere.app";
  buildInstance(_instance);
  launcherDoes("echo rc=0 > \"${0%/rcp/*}/.provisioning_rc\"");
  const auto before = machine();

  EXPECT_EQ("1.5", told(0).at("after").at("hotfix"));

  EXPECT_EQ(before, machine());
}

TEST_F(RehearseTest, ARunningApplicationIsNotSeen) {
  proves("REHEARSE-3");
  const std::string application = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(application);
  RunOptions options;
  options.background = {{application, "--idle"}};

  EXPECT_EQ(0, rehearse({}, options).status);
}

TEST_F(RehearseTest, LinksPipesAndSeveralNamesAreCopiedAsTheyAre) {
  proves("REHEARSE-4");
  const std::string folder = _instance.home() + "/odd";
  _sandbox.writeFile(folder + "/file", "x", 04750);
  ASSERT_EQ(
      0, link(_sandbox.host(folder + "/file").c_str(), _sandbox.host(folder + "/second").c_str()));
  _sandbox.makeLink(folder + "/link", "/nowhere");
  _sandbox.makePipe(folder + "/pipe");
  _sandbox.giveTo(folder + "/file", CliSandbox::kBob, CliSandbox::kBob);
  recordHotfix("1.6");
  launcherDoes(
      "[ \"${0%/*}/odd/file\" -ef \"${0%/*}/odd/second\" ] && "
      "[ -p \"${0%/*}/odd/pipe\" ] && echo > \"${0%/*}/together\"");

  const json answer = told(1);

  EXPECT_THAT(pathsOf(answer, "created"), Contains("Contents/MacOS/rcp/together"));
  for (const char* change : {"created", "removed", "replaced"})
    EXPECT_THAT(pathsOf(answer, change), Not(Contains(HasSubstr("/odd/")))) << change;
}

// --- Ends on the way -----------------------------------------------------------------------------

TEST_F(RehearseTest, ASignalEndsItAndTheCopyGoes) {
  proves("REHEARSE-5");
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    // The whole rehearsal is asked to end while the launcher runs.
    launcherDoes("kill -" + std::to_string(number) + " $PPID; while :; do :; done");
    const auto before = machine();

    const RunResult result = rehearse();

    EXPECT_EQ(1, result.status) << "the installer alone was asked";
    EXPECT_THAT(result.out, HasSubstr("a signal ended the run"));
    EXPECT_EQ(before, machine());
  }
}

TEST_F(RehearseTest, ATerminatedRehearsalLeavesNothing) {
  proves("REHEARSE-5");
  launcherDoes("while :; do :; done");
  const auto before = machine();
  const RunResult result = shell(
      std::string(CliSandbox::kControl) + " rehearse " + _package.folder + " --instance " +
      _instance.bundle + " & until [ -e /tmp/hotfixctl-*/tmp/install_trace.log ]; do :; done; " +
      "kill -TERM $!; wait $!");

  EXPECT_EQ(8, result.status);
  EXPECT_EQ("hotfixctl: Asked to end by signal 15 (Terminated)\n", result.err);
  EXPECT_EQ(before, machine());
}

TEST_F(RehearseTest, NothingOfItOutlivesIt) {
  proves("REHEARSE-5");
  launcherDoes(
      "echo rc=0 > \"${0%/rcp/*}/.provisioning_rc\"; (while :; do echo >> /tmp/beat; done) &");

  const RunResult result = shell(std::string(CliSandbox::kControl) + " rehearse " +
                                 _package.folder + " --instance " + _instance.bundle +
                                 " >/dev/null; for p in /proc/[0-9]*; do [ -e $p/exe ] && echo $p; "
                                 "done");

  EXPECT_EQ(2, std::count(result.out.begin(), result.out.end(), '\n')) << result.out;
}

// --- Where there is none -------------------------------------------------------------------------

TEST_F(RehearseTest, WithoutAnInstanceItIsSaid) {
  proves("REHEARSE-6");
  for (const std::string& place : {std::string("/missing"), std::string("/tmp")}) {
    const RunResult result = control({"rehearse", _package.folder, "--instance", place});
    EXPECT_EQ(3, result.status);
    EXPECT_EQ("hotfixctl: No instance in an application bundle is at \"" + place + "\"\n",
              result.err);
  }
}

TEST_F(RehearseTest, AnUnreadableRecordIsSaid) {
  proves("REHEARSE-6");
  _sandbox.writeFile(_instance.info(), "no list");

  EXPECT_EQ("not-readable", told(4).at("outcome"));
}

TEST_F(RehearseTest, ARunAtWorkIsNotWaitedFor) {
  proves("REHEARSE-6");
  launcherDoes("echo > /tmp/up; until [ -e /tmp/go ]; do :; done");
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return _sandbox.exists("/tmp/up"); }));

  EXPECT_EQ("at-work", told(6).at("outcome"));

  running.kill();
}

TEST_F(RehearseTest, ALauncherThatWasLeftBehindIsNotWaitedFor) {
  proves("REHEARSE-6");
  launcherDoes("echo > /tmp/up; while :; do :; done");
  RunOptions options;
  options.background = {{_instance.launcher(), "-rcpLauncherWait", "-provManifest", "-noSplash",
                         "-provisioningOperation", "update"}};
  options.awaited = "/tmp/up";

  const RunResult result = rehearse({}, options);

  EXPECT_EQ(6, result.status);
  EXPECT_EQ(
      "hotfixctl: A launcher that an earlier run left behind is at work on the instance; run it "
      "again later\n",
      result.err);
}

// It would be copied into itself until the disk is full.
TEST_F(RehearseTest, AWorkFolderInWhatIsCopiedIsRefused) {
  proves("REHEARSE-7");
  _sandbox.makeFolder("/Users/data/below");
  _sandbox.makeLink("/way", "/Users/data/below");
  const auto before = machine();
  for (const std::string& folder : {_instance.bundle, _instance.home() + "/eclipse",
                                    std::string("/Users/data"), std::string("/way")}) {
    const RunResult result = rehearse({"--rcpdata", "/Users/data", "--work", folder});

    EXPECT_EQ(2, result.status) << folder;
    EXPECT_THAT(result.err, StartsWith("hotfixctl: \"" + folder + "\" lies in what is copied, "));
  }
  EXPECT_EQ(before, machine());
  EXPECT_EQ(0, rehearse({"--rcpdata", "/Users/data", "--work", "/Users"}).status);
}

TEST_F(RehearseTest, WithoutRoomThereIsNone) {
  proves("REHEARSE-6");
  _sandbox.makeFolder("/small");
  _sandbox.limitSpace("/small", 64 << 10);
  _sandbox.writeFile(_instance.home() + "/large", std::string(256 << 10, 'x'));

  const RunResult result = rehearse({"--work", "/small"});

  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, AllOf(StartsWith("hotfixctl: The copy: \"" + _instance.bundle),
                                HasSubstr("No space left on device")));
  EXPECT_THAT(_sandbox.list("/small"), IsEmpty());
  EXPECT_EQ(2, rehearse({"--work", "/missing"}).status);
}

// Root makes folders there and opens one of them to all.
TEST_F(RehearseTest, AWorkFolderThatSomebodyCouldExchangeIsRefused) {
  proves("REHEARSE-7");
  _sandbox.makeFolder("/shelf/below");
  _sandbox.setMode("/shelf", 0777);
  _sandbox.makeLink("/way", "/shelf/below");
  for (const char* folder : {"/shelf", "/shelf/below", "/way"}) {
    const RunResult result = rehearse({"--work", folder});

    EXPECT_EQ(2, result.status) << folder;
    EXPECT_EQ(
        "hotfixctl: \"" + std::string(folder) + "\" cannot be trusted: others can write /shelf\n",
        result.err);
  }
  EXPECT_THAT(_sandbox.list("/shelf"), ElementsAre("below"));

  _sandbox.setMode("/shelf", 01777);
  EXPECT_EQ(0, rehearse({"--work", "/way"}).status);
}

TEST_F(RehearseTest, AWorkFolderOfAnotherUserIsRefused) {
  proves("REHEARSE-7");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";

  const RunResult result = rehearse({"--work", "/Users/alice"});

  EXPECT_EQ(2, result.status);
  EXPECT_EQ(
      "hotfixctl: \"/Users/alice\" cannot be trusted: /Users/alice belongs to the user 1000\n",
      result.err);
}

TEST_F(RehearseTest, AUserWithoutNamespacesIsToldSo) {
  proves("REHEARSE-6");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  // Whoever is in a changed root gets no user namespace.
  _sandbox.setMode("/tmp", 01777);
  RunOptions options;
  options.user = CliSandbox::kAlice;

  const RunResult result = rehearse({}, options);

  EXPECT_EQ(2, result.status);
  EXPECT_EQ("hotfixctl: a process with mounts of its own: Operation not permitted\n", result.err);
  EXPECT_THAT(_sandbox.entriesNamed(kWork), IsEmpty());
}

TEST_F(RehearseTest, TheCommandLineIsChecked) {
  EXPECT_EQ(64, control({"rehearse"}).status);
  EXPECT_EQ(64, control({"rehearse", "a", "b"}).status);
  EXPECT_EQ(1, control({"rehearse", "/missing", "--instance", _instance.bundle}).status);
}

}  // namespace
}  // namespace installer::cli
