#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "ctl/ControlTest.h"
#include "ctl/Schema.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

class StatusTest : public ControlTest {
 protected:
  json told(int status, std::vector<std::string> arguments = {}, const RunOptions& options = {}) {
    arguments.insert(arguments.begin(), {"status", "--json"});
    const RunResult result = control(arguments, options);
    EXPECT_EQ(status, result.status) << result.out;
    EXPECT_EQ("", result.err);
    json answer = json::parse(result.out, nullptr, false);
    EXPECT_EQ(status, answer.at("status"));
    return answer;
  }
  // Of a machine with one instance.
  json instance(int status, const std::vector<std::string>& arguments = {}) {
    json answer = told(status, arguments);
    EXPECT_EQ(1u, answer.at("instances").size());
    return answer.at("instances").at(0);
  }
  std::vector<std::string> findings(int status) {
    std::vector<std::string> names;
    const json findings = instance(status, {"--doctor"}).at("findings");
    for (const json& finding : findings) names.push_back(finding.at("name"));
    return names;
  }
  std::string brief(int status, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"status", "--brief"});
    const RunResult result = control(arguments);
    EXPECT_EQ(status, result.status) << result.out;
    EXPECT_EQ("", result.err);
    return result.out;
  }
  // A manifest with the features "f<first>" to "f<end - 1>".
  static std::string manifestOf(int first, int end) {
    const std::string whole = kSimpleManifest;
    const std::size_t at = whole.find("<feature ");
    std::string features;
    for (int i = first; i < end; ++i)
      features += "<feature id=\"f" + std::to_string(i) + "\" version=\"1\"/>\n";
    return whole.substr(0, at) + features + whole.substr(whole.find('\n', at));
  }
  Instance other(const std::string& bundle) {
    Instance instance;
    instance.bundle = bundle;
    buildInstance(instance);
    return instance;
  }
};

TEST_F(StatusTest, AnInstalledHotfixIsToldWithItsIdentifier) {
  proves("STATUS-1");
  ASSERT_EQ(0, install().status);

  const json found = instance(0);

  EXPECT_EQ("hotfix-installed", found.at("state"));
  EXPECT_EQ("1.5", found.at("hotfix").at("version"));
  EXPECT_EQ("com.kiv.hotfix.fifteen", found.at("hotfix").at("identifier"));
  EXPECT_EQ("Quillmere", found.at("product"));
  EXPECT_EQ(_instance.bundle, found.at("bundle"));
  EXPECT_EQ(_instance.home(), found.at("rcpHome"));
  EXPECT_EQ("applications", found.at("foundBy"));
  EXPECT_EQ("8.5.2", found.at("applicationVersion"));
  EXPECT_EQ("6.2.3", found.at("baseVersion"));
  EXPECT_TRUE(found.at("recordedVersion").is_null());
  EXPECT_EQ(true, found.at("provisioning").at("succeeded"));
  EXPECT_EQ("0", found.at("provisioning").at("code"));
  EXPECT_EQ(false, found.at("atWork"));
  EXPECT_THAT(found.at("findings"), IsEmpty());
}

TEST_F(StatusTest, AnInstanceWithoutAHotfixHasAStatusOfItsOwn) {
  proves("STATUS-1");
  const json found = instance(1);

  EXPECT_EQ("no-hotfix", found.at("state"));
  EXPECT_TRUE(found.at("hotfix").is_null());
  EXPECT_TRUE(found.at("provisioning").is_null());
}

TEST_F(StatusTest, ARecordedVersionIsTold) {
  recordHotfix("1.4");

  EXPECT_EQ("8.5.2", instance(0).at("recordedVersion"));
}

TEST_F(StatusTest, AnswersForProgramsKeepToTheirSchema) {
  proves("CTL-6");
  ctl::test::judged(control({"status", "--json"}).out, "status-1");
  recordHotfix("1.6");
  ASSERT_EQ(1, install().status);
  ctl::test::judged(control({"status", "--json", "--doctor"}).out, "status-1");
  _sandbox.writeFile(_instance.info(), "no list");
  ctl::test::judged(control({"status", "--json", _instance.bundle, "/x.app"}).out, "status-1");
}

// --- Which instances -----------------------------------------------------------------------------

TEST_F(StatusTest, RegisteredInstancesAndThoseOfTheApplicationsFolderAreLookedAtOnce) {
  proves("STATUS-2");
  const Instance away = other("/Volumes/Away/Other.app");
  registerProduct("Other",
                  ListValue::dictionary({{"pathToProduct", ListValue::string(away.bundle)}}));
  registerProduct("Quillmere",
                  ListValue::dictionary({{"pathToProduct", ListValue::string(_instance.bundle)}}));
  registerProduct("Broken", ListValue::dictionary({}));
  _sandbox.makeFolder("/Applications/Else.app/Contents/MacOS");

  const json answer = told(1);

  std::vector<std::string> found;
  for (const json& one : answer.at("instances"))
    found.push_back(one.at("foundBy").get<std::string>() + " " +
                    one.at("rcpHome").get<std::string>());
  EXPECT_THAT(found, UnorderedElementsAre("registration " + away.home(),
                                          "registration " + _instance.home()));
}

TEST_F(StatusTest, AnInstanceThatIsRegisteredThroughALinkIsLookedAtOnce) {
  proves("STATUS-2");
  _sandbox.makeLink("/Volumes/link", "/Applications");
  registerProduct(
      "Quillmere",
      ListValue::dictionary({{"pathToProduct", ListValue::string("/Volumes/link/Quillmere.app")}}));

  EXPECT_EQ("registration", instance(1).at("foundBy"));
}

TEST_F(StatusTest, ABundleAndItsRcpHomeMeanTheSame) {
  proves("STATUS-2");
  for (const std::string& place : {_instance.bundle, _instance.bundle + "/", _instance.home()}) {
    const json found = instance(1, {place});
    EXPECT_EQ(_instance.home(), found.at("rcpHome")) << place;
    EXPECT_EQ("argument", found.at("foundBy"));
  }
}

TEST_F(StatusTest, ARelativePathStandsInTheWorkingFolder) {
  proves("STATUS-2");
  RunOptions options;
  options.directory = "/Applications";

  const json found = told(1, {"Quillmere.app"}, options).at("instances").at(0);

  EXPECT_EQ(_instance.home(), found.at("rcpHome"));
}

TEST_F(StatusTest, AnRcpHomeElsewhereIsTakenAsItStands) {
  Instance flat;
  flat.bundle = "/opt/platform";
  buildInstance(flat);
  _sandbox.makeFolder("/opt/flat/deploy");
  _sandbox.writeFile("/opt/flat/deploy/install.xml", kInstanceManifest);

  const json found = instance(1, {"/opt/flat"});

  EXPECT_EQ("/opt/flat", found.at("rcpHome"));
  EXPECT_TRUE(found.at("bundle").is_null());
  EXPECT_TRUE(found.at("product").is_null());
}

TEST_F(StatusTest, WhereThereIsNoInstanceItIsSaid) {
  proves("STATUS-1");
  EXPECT_EQ("no-instance", instance(3, {"/missing"}).at("state"));
  EXPECT_EQ("no-instance", instance(3, {"/missing/X.app"}).at("state"));
  EXPECT_EQ("no-instance", instance(3, {_instance.info()}).at("state"));

  _sandbox.remove(_instance.deploy("install.xml"));
  EXPECT_EQ("no-instance", instance(3).at("state"));

  _sandbox.remove(_instance.bundle);
  EXPECT_THAT(told(3).at("instances"), IsEmpty());
  EXPECT_FALSE(_sandbox.exists("/missing"));
}

TEST_F(StatusTest, OfSeveralInstancesTheHighestNumberCounts) {
  proves("STATUS-1");
  recordHotfix("1.4");
  const Instance second = other("/Applications/Second.app");

  EXPECT_EQ(2u, told(1).at("instances").size());
  EXPECT_EQ(3u, told(3, {_instance.bundle, second.bundle, "/missing"}).at("instances").size());
}

// --- What is not readable ------------------------------------------------------------------------

TEST_F(StatusTest, ARecordThatCannotBeReadIsAStatusOfItsOwn) {
  proves("STATUS-1");
  _sandbox.writeFile(_instance.info(), "no list");

  const json found = instance(4);

  EXPECT_EQ("not-readable", found.at("state"));
  EXPECT_THAT(found.at("reason").get<std::string>(), HasSubstr("installInfo.plist"));
}

TEST_F(StatusTest, AnInstanceWithoutRightsIsNotReadable) {
  proves("STATUS-1");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.setMode(_instance.home(), 0700);
  RunOptions options;
  options.user = CliSandbox::kAlice;

  const json found = told(4, {_instance.bundle}, options).at("instances").at(0);

  EXPECT_THAT(found.at("reason").get<std::string>(), HasSubstr("Permission denied"));
}

TEST_F(StatusTest, ABundleThatIsClosedIsNotReadable) {
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.setMode(_instance.bundle, 0700);
  RunOptions options;
  options.user = CliSandbox::kAlice;

  EXPECT_EQ("not-readable", told(4, {_instance.home()}, options).at("instances").at(0).at("state"));
}

// --- What needs attention ------------------------------------------------------------------------

TEST_F(StatusTest, AFailedProvisioningNeedsAttention) {
  proves("STATUS-3");
  recordHotfix("1.4");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=13\n"));
  ASSERT_EQ(1, install().status);

  const json answer = told(2);

  const json found = answer.at("instances").at(0);
  EXPECT_EQ("needs-attention", found.at("state"));
  EXPECT_EQ("13", found.at("provisioning").at("code"));
  EXPECT_EQ(false, found.at("provisioning").at("succeeded"));
  EXPECT_EQ("provisioning-failed", found.at("findings").at(0).at("name"));
  EXPECT_EQ("last-run-failed", found.at("findings").at(1).at("name"));
  EXPECT_EQ("provisioning-failed", answer.at("lastRun").at("run").at("ending"));
}

TEST_F(StatusTest, AResultWithoutACodeNeedsAttention) {
  proves("STATUS-3");
  _sandbox.writeFile(_instance.result(), "x=1\n");

  const json found = instance(2);

  EXPECT_TRUE(found.at("provisioning").at("code").is_null());
  EXPECT_THAT(found.at("findings").at(0).at("text").get<std::string>(),
              HasSubstr("left no answer"));
}

TEST_F(StatusTest, ARunThatFailedOnAnotherInstanceConcernsOnlyThat) {
  proves("STATUS-3");
  const Instance second = other("/Applications/Second.app");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));
  ASSERT_EQ(1, install().status);

  EXPECT_EQ("needs-attention", told(2, {_instance.bundle}).at("instances").at(0).at("state"));
  EXPECT_EQ("no-hotfix", told(1, {second.bundle}).at("instances").at(0).at("state"));
}

TEST_F(StatusTest, ARunThatFailedBeforeItKnewTheInstanceConcernsIt) {
  proves("STATUS-3");
  const Instance odd = other("/Applications/A=B/Quillmere.app");
  ASSERT_EQ(1, _sandbox.run({_package.folder, "/Applications/A=B"}).status);

  const json found = told(2, {odd.bundle}).at("instances").at(0);

  EXPECT_EQ("last-run-failed", found.at("findings").at(0).at("name"));
}

TEST_F(StatusTest, HoweverTheInstanceIsNamedItsFailedRunConcernsIt) {
  proves("STATUS-3");
  _sandbox.writeFile(_instance.launcher(), "");
  _sandbox.makeLink("/link.app", _instance.bundle);
  ASSERT_EQ(1, install().status);

  for (const std::string& place : {_instance.bundle, std::string("/link.app"),
                                   std::string("/Applications/../Applications/Quillmere.app")}) {
    const json found = instance(2, {place}).at("findings");
    ASSERT_FALSE(found.empty()) << place;
    EXPECT_EQ("last-run-failed", found.back().at("name")) << place;
  }
}

TEST_F(StatusTest, AnInstanceThatTheRunNamedFromItsOwnFolderIsUnknown) {
  proves("STATUS-3");
  _sandbox.remove(_instance.launcher());
  RunOptions options;
  options.directory = "/Applications";
  ASSERT_EQ(1, _sandbox.run({_package.folder, "."}, options).status);

  const json answer = told(1, {_instance.bundle}, options);

  EXPECT_EQ("./Quillmere.app/Contents/MacOS/rcp", answer.at("lastRun").at("run").at("rcpHome"));
  EXPECT_THAT(answer.at("instances").at(0).at("findings"), IsEmpty());
}

TEST_F(StatusTest, ARefusedOlderHotfixConcernsNobody) {
  proves("STATUS-3");
  recordHotfix("1.6");
  ASSERT_EQ(1, install().status);

  const json answer = told(0);

  EXPECT_EQ("higher-hotfix-installed", answer.at("lastRun").at("run").at("ending"));
}

// --- The last run --------------------------------------------------------------------------------

TEST_F(StatusTest, TheLastRunIsToldWithRecordAndMarker) {
  proves("STATUS-4");
  recordHotfix("1.6");
  ASSERT_EQ(1, install().status);

  const json last = told(0).at("lastRun");

  EXPECT_EQ(kTrace, last.at("trace"));
  EXPECT_LT(last.at("ageSeconds"), 60);
  EXPECT_EQ(_instance.home(), last.at("run").at("rcpHome"));
  EXPECT_EQ("Higher version hotfix has been installed.", last.at("run").at("cause"));
  EXPECT_EQ("Higher version hotfix has been installed.", last.at("run").at("firstError"));
  EXPECT_EQ(7, last.at("errorRecord").at("code"));
  EXPECT_EQ("a higher hotfix is installed", last.at("errorRecord").at("meaning"));
  EXPECT_EQ((std::vector<std::string>{_instance.bundle}),
            last.at("errorRecord").at("details").get<std::vector<std::string>>());
  EXPECT_EQ(true, last.at("marker"));
}

TEST_F(StatusTest, AnotherUsersTraceIsNotTheLastRuns) {
  proves("STATUS-4");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  ASSERT_EQ(0, install().status);
  _sandbox.giveTo(kTrace, CliSandbox::kAlice, CliSandbox::kAlice);

  const json last = told(0).at("lastRun");

  EXPECT_EQ(nullptr, last.at("run"));
  EXPECT_EQ("\"/tmp/install_trace.log\" cannot be read: it belongs to another user",
            last.at("reason"));
}

TEST_F(StatusTest, AMachineOnWhichNothingRanHasNoLastRun) {
  proves("STATUS-4");
  const json last = told(1).at("lastRun");

  EXPECT_TRUE(last.at("run").is_null());
  EXPECT_TRUE(last.at("modified").is_null());
  EXPECT_TRUE(last.at("reason").is_null());
  EXPECT_TRUE(last.at("errorRecord").is_null());
  EXPECT_EQ(false, last.at("marker"));
}

TEST_F(StatusTest, ATraceThatCannotBeReadIsSaid) {
  _sandbox.makePipe(kTrace);

  const json last = told(1).at("lastRun");

  EXPECT_THAT(last.at("reason").get<std::string>(), HasSubstr(kTrace));
}

TEST_F(StatusTest, ARecordOfAnUnknownCodeIsToldAsItStands) {
  for (const char* code : {"<integer>2</integer>", "<integer>99</integer>"}) {
    _sandbox.writeFile(kPasteboard,
                       "<plist version=\"1.0\"><dict><key>ERROR_CODE</key>" + std::string(code) +
                           "<key>ERROR_DETAILS</key><string>x</string></dict></plist>");
    const json record = told(1).at("lastRun").at("errorRecord");
    EXPECT_TRUE(record.at("meaning").is_null());
    EXPECT_THAT(record.at("details"), IsEmpty());
  }
  _sandbox.writeFile(kPasteboard,
                     "<plist version=\"1.0\"><dict><key>ERROR_CODE</key>"
                     "<string>3</string></dict></plist>");
  EXPECT_TRUE(told(1).at("lastRun").at("errorRecord").is_null());
}

// --- Nothing is changed, nobody is waited for ----------------------------------------------------

TEST_F(StatusTest, NothingIsMadeOrChanged) {
  proves("STATUS-5");
  ASSERT_EQ(0, install().status);
  const auto before = _sandbox.tree("/Applications");
  const auto tmp = _sandbox.tree("/tmp");
  struct stat homeBefore {};
  struct stat homeAfter {};
  ASSERT_EQ(0, stat(_sandbox.host(_instance.home()).c_str(), &homeBefore));
  RunOptions options;
  options.systemLog = true;

  const RunResult result =
      control({"status", "--doctor", _instance.bundle, "/Applications/No.app"}, options);

  ASSERT_EQ(0, stat(_sandbox.host(_instance.home()).c_str(), &homeAfter));
  EXPECT_EQ(3, result.status);
  EXPECT_EQ(before, _sandbox.tree("/Applications"));
  EXPECT_EQ(tmp, _sandbox.tree("/tmp"));
  EXPECT_EQ(homeBefore.st_ctim.tv_sec, homeAfter.st_ctim.tv_sec);
  EXPECT_EQ(homeBefore.st_ctim.tv_nsec, homeAfter.st_ctim.tv_nsec);
  EXPECT_THAT(result.systemLog, IsEmpty());
}

TEST_F(StatusTest, ARunAtWorkIsToldAndNotWaitedFor) {
  proves("STATUS-5");
  recordHotfix("1.4");
  _sandbox.writeFile(_instance.result(), "rc=13\n");
  _sandbox.script("rcplauncher", ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));

  const json answer = told(0);

  EXPECT_EQ(true, answer.at("instances").at(0).at("atWork"));
  EXPECT_EQ("at-work", answer.at("lastRun").at("run").at("ending"));
  running.kill();
}

TEST_F(StatusTest, TwoThatAskAtOnceAreNoRun) {
  proves("STATUS-5");
  recordHotfix("1.4");
  _sandbox.writeFile(_instance.result(), "rc=13\n");
  const int asking = open(_sandbox.host(_instance.home()).c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(0, flock(asking, LOCK_SH | LOCK_NB));

  const json found = instance(2);

  EXPECT_EQ(false, found.at("atWork"));
  EXPECT_EQ("provisioning-failed", found.at("findings").at(0).at("name"));
  close(asking);
}

// --- The doctor ----------------------------------------------------------------------------------

TEST_F(StatusTest, TheDoctorFindsNothingAfterAnInstallation) {
  proves("STATUS-6");
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(findings(0), IsEmpty());
}

TEST_F(StatusTest, TheDoctorFindsWhatAKilledRunLeft) {
  proves("STATUS-6");
  RunOptions options;
  options.set("LD_PRELOAD", CliSandbox::kKillAtName);
  options.set("HOTFIX_KILL_AT_NAME", "installInfo.plist");
  // The sanitizer of a build with one wants to be the first library that is loaded.
  options.set("ASAN_OPTIONS", "verify_asan_link_order=0");
  ASSERT_EQ(128 + SIGKILL, install(options).status);

  EXPECT_THAT(findings(2), ElementsAre("left-over-item", "last-run-failed"));
}

TEST_F(StatusTest, TheDoctorNamesWhatWasLeftWhereRunsWrite) {
  proves("STATUS-6");
  const std::string name = "/.hotfix-16045690984503098046";
  // None of ours; no run removes them, nor anything beside the home.
  for (const char* other : {"/.hotfixes", "/.hotfix-notes.txt", "/.hotfix-0123456789abcdef",
                            "/.hotfix-007", "/.hotfix-", "/../.hotfix-16045690984503098046"})
    _sandbox.writeFile(_instance.home() + other, "none of ours");
  EXPECT_THAT(findings(1), IsEmpty());
  for (const std::string& folder :
       {_instance.home(), _instance.deploy("extras"), _instance.home() + "/deploy",
        _instance.home() + "/eclipse/links", _instance.data(), _instance.data() + "/.config"}) {
    _sandbox.writeFile(folder + name, "half");

    const json found = instance(2, {"--doctor"});

    ASSERT_EQ(1u, found.at("findings").size()) << folder;
    EXPECT_EQ("left-over-item", found.at("findings").at(0).at("name"));
    EXPECT_EQ("A run that was killed left \"" + folder + name + "\".",
              found.at("findings").at(0).at("text"));
    EXPECT_EQ("no-hotfix", instance(1).at("state")) << "only the doctor looks for it";
    ASSERT_EQ(0, install().status);
    EXPECT_FALSE(_sandbox.exists(folder + name)) << "as the remedy promises";
    _sandbox.remove(_instance.info());
    _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));
    _sandbox.remove(kTrace);
  }
}

TEST_F(StatusTest, TheDoctorFindsAVersionWithoutAnIdentifierAndTheReverse) {
  proves("STATUS-6");
  recordHotfix("1.4");
  writeInfo({{"hotfixVersion", ListValue::string("1.4")}});
  EXPECT_THAT(findings(2), ElementsAre("version-without-identifier"));

  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));
  writeInfo({{"installedHotfixBundleID", ListValue::string("com.kiv.x")}});
  EXPECT_THAT(findings(2), ElementsAre("identifier-without-version"));
}

TEST_F(StatusTest, TheDoctorFindsAnUninstallManifestThatIsMissingOrDamaged) {
  proves("STATUS-6");
  recordHotfix("1.4");
  EXPECT_THAT(findings(0), IsEmpty());

  _sandbox.writeFile(_instance.deploy("uninstall.hotfix.xml"), "<uninstall");
  EXPECT_THAT(findings(2), ElementsAre("uninstall-manifest-damaged"));

  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));
  EXPECT_THAT(findings(2), ElementsAre("uninstall-manifest-missing"));
}

TEST_F(StatusTest, TheDoctorFindsFeaturesThatNobodyRecorded) {
  proves("STATUS-6");
  _sandbox.writeFile(_instance.deploy("uninstall.hotfix.xml"), kSimpleManifest);
  EXPECT_THAT(findings(1), IsEmpty()) << "they are not installed";

  _sandbox.writeFile(_instance.deploy("install.xml"), kSimpleManifest);
  const json found = instance(2, {"--doctor"});
  ASSERT_EQ(1u, found.at("findings").size());
  EXPECT_EQ("unrecorded-feature", found.at("findings").at(0).at("name"));
  EXPECT_THAT(found.at("findings").at(0).at("text").get<std::string>(),
              StartsWith("The feature com.kiv.fix 1 is installed"));
}

TEST_F(StatusTest, ManyFeaturesThatNobodyRecordedAreCounted) {
  proves("STATUS-6");
  _sandbox.writeFile(_instance.deploy("uninstall.hotfix.xml"), manifestOf(0, 25));
  _sandbox.writeFile(_instance.deploy("install.xml"), manifestOf(2, 25));

  const json found = instance(2, {"--doctor"}).at("findings");

  ASSERT_EQ(11u, found.size());
  for (const json& finding : found) EXPECT_EQ("unrecorded-feature", finding.at("name"));
  EXPECT_THAT(found.at(0).at("text").get<std::string>(), StartsWith("The feature f2 1 is "));
  EXPECT_THAT(found.at(9).at("text").get<std::string>(), StartsWith("The feature f11 1 is "));
  EXPECT_EQ("13 more features are installed, and no hotfix is recorded.", found.at(10).at("text"));
}

// Each would otherwise be compared with each.
TEST_F(StatusTest, TheDoctorIsSoonDoneWithHostileManifests) {
  proves("STATUS-6");
  _sandbox.writeFile(_instance.deploy("uninstall.hotfix.xml"), manifestOf(0, 100'000));
  _sandbox.writeFile(_instance.deploy("install.xml"), manifestOf(100'000, 200'000));

  EXPECT_THAT(findings(1), IsEmpty());
}

TEST_F(StatusTest, TheDoctorFindsAnInstanceWithoutKeyStores) {
  proves("STATUS-6");
  _sandbox.remove(_instance.deploy(".keystore"));
  EXPECT_THAT(findings(2), ElementsAre("no-key-stores"));

  _sandbox.writeFile(_instance.deploy(".KeyStore.x"), "");
  EXPECT_THAT(findings(1), IsEmpty());
}

TEST_F(StatusTest, TheDoctorSaysWhatItMayNotLookThrough) {
  proves("STATUS-6");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.setMode(_instance.home() + "/deploy", 0711);
  RunOptions options;
  options.user = CliSandbox::kAlice;

  const json found = told(2, {"--doctor", _instance.bundle}, options).at("instances").at(0);

  ASSERT_EQ(1u, found.at("findings").size()) << "nothing is said of key stores";
  EXPECT_EQ("not-looked-through", found.at("findings").at(0).at("name"));
  EXPECT_EQ("\"" + _instance.home() + "/deploy\" cannot be listed by this user.",
            found.at("findings").at(0).at("text"));
}

TEST_F(StatusTest, TheDoctorFindsFilesOfAnotherOwner) {
  proves("STATUS-6");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  ASSERT_EQ(0, install().status);
  _sandbox.giveTo(_instance.info(), 0, 0);

  const json found = instance(2, {"--doctor"});

  ASSERT_EQ(1u, found.at("findings").size());
  EXPECT_EQ("other-owner", found.at("findings").at(0).at("name"));
  EXPECT_THAT(found.at("findings").at(0).at("text").get<std::string>(),
              HasSubstr("belongs to user 0, its neighbours to user 1000."));
}

TEST_F(StatusTest, TheDoctorFindsLinksInPlaceOfFiles) {
  proves("STATUS-6");
  _sandbox.writeFile(_instance.deploy("install.real"), kInstanceManifest);
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.makeLink(_instance.deploy("install.xml"), "install.real");

  EXPECT_THAT(findings(2), ElementsAre("link-in-place-of-a-file"));
}

TEST_F(StatusTest, TheDoctorSparesAnInstanceOnWhichARunIsAtWork) {
  proves("STATUS-6");
  _sandbox.writeFile(_instance.deploy(".hotfix-16045690984503098046"), "half");
  _sandbox.script("rcplauncher", ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));

  EXPECT_THAT(findings(1), IsEmpty());

  running.kill();
}

// --- For people ----------------------------------------------------------------------------------

TEST_F(StatusTest, TheScreenTellsInstancesAndTheLastRun) {
  proves("STATUS-1");
  ASSERT_EQ(0, install().status);

  const RunResult result = control({"status"});

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out,
              AllOf(StartsWith(_instance.bundle + "\n" +
                               "  State         a hotfix is installed, and all is well\n"
                               "  Hotfix        1.5 (com.kiv.hotfix.fifteen)\n"
                               "  Application   8.5.2\n"
                               "  Base plug-in  6.2.3\n"
                               "  Launcher      succeeded (rc 0)\n"
                               "\n"
                               "The last run on this machine\n"
                               "  Trace         /tmp/install_trace.log, "),
                    HasSubstr("\n  Result        the hotfix was installed\n"),
                    HasSubstr("\n  Error record  code 0\n"), Not(HasSubstr("Remedy"))));
}

TEST_F(StatusTest, WhatNeedsAttentionIsToldWithItsRemedy) {
  proves("STATUS-3");
  recordHotfix("1.4");
  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));

  const RunResult result = control({"status", "--doctor"});

  EXPECT_THAT(result.out, AllOf(HasSubstr("\n  State         needs attention\n"),
                                HasSubstr("\n  ! \"" + _instance.deploy("uninstall.hotfix.xml") +
                                          "\" is missing: the hotfix cannot be removed.\n"
                                          "    Copy the hotfix's uninstall manifest there,")));
}

TEST_F(StatusTest, AFailedCheckIsToldWithRecordAndMarker) {
  proves("STATUS-4");
  recordHotfix("1.6");
  ASSERT_EQ(1, install().status);

  EXPECT_THAT(control({"status"}).out,
              AllOf(HasSubstr("\n  Result        a higher hotfix is installed\n"),
                    HasSubstr("\n  Error record  code 7: a higher hotfix is installed, " +
                              _instance.bundle + "\n"),
                    HasSubstr("\n  Marker        /tmp/quillmere.hotfix.error is there: ")));
}

TEST_F(StatusTest, WithoutAnyInstanceThereIsALine) {
  _sandbox.remove(_instance.bundle);

  EXPECT_THAT(control({"status"}).out,
              StartsWith("No instance is registered, and none is in the applications folder.\n"));
}

// --- For scripts ---------------------------------------------------------------------------------

TEST_F(StatusTest, InBriefThereIsTheVersionOrNone) {
  proves("STATUS-7");
  EXPECT_EQ("none\n", brief(1, {_instance.bundle}));

  recordHotfix("1.4");
  EXPECT_EQ("1.4\n", brief(0, {}));
  EXPECT_EQ("1.4\n", brief(0, {_instance.home()}));
}

TEST_F(StatusTest, InBriefThereIsEverythingThatNeedsAttention) {
  proves("STATUS-7");
  recordHotfix("1.4");
  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));
  _sandbox.writeFile(_instance.result(), "rc=13\n");

  EXPECT_EQ("1.4 (needs attention: The launcher answered 13 when it was last started. \"" +
                _instance.deploy("uninstall.hotfix.xml") +
                "\" is missing: the hotfix cannot be removed.)\n",
            brief(2, {"--doctor"}));
}

TEST_F(StatusTest, InBriefAFailedRunIsToldBesideTheHotfixThatIsThereNot) {
  proves("STATUS-7");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=13\n"));
  ASSERT_EQ(1, install().status);

  EXPECT_THAT(brief(2, {}), StartsWith("none (needs attention: The launcher answered 13"));
}

TEST_F(StatusTest, InBriefEachOfSeveralInstancesHasItsName) {
  proves("STATUS-7");
  recordHotfix("1.4");
  const Instance second = other("/Applications/Second.app");

  EXPECT_EQ(_instance.bundle + ": 1.4\n" + second.bundle + ": none\n/missing: no instance\n",
            brief(3, {_instance.bundle, second.bundle, "/missing"}));
}

TEST_F(StatusTest, InBriefThereIsWhyNothingCanBeTold) {
  proves("STATUS-7");
  EXPECT_EQ("no instance\n", brief(3, {"/missing"}));

  _sandbox.writeFile(_instance.info(), "no list");
  EXPECT_THAT(brief(4, {}), AllOf(StartsWith("not readable: "), HasSubstr("installInfo.plist")));

  _sandbox.remove(_instance.bundle);
  EXPECT_EQ("no instance\n", brief(3, {}));
}

TEST_F(StatusTest, InBriefAVersionIsOneLineThatDoesNothingToATerminal) {
  proves("STATUS-7", "CTL-5");
  recordHotfix("1.4\n2\x7f");

  EXPECT_EQ("1.4\\n2\\x7f\n", brief(0, {}));
}

TEST_F(StatusTest, AnswersForProgramsAreAlwaysWhole) {
  EXPECT_EQ(1u, told(1, {"--brief"}).at("instances").size());
}

TEST_F(StatusTest, AskedForAVersionTheStatusTellsWhetherTheHotfixIsThatHighAsTheInstallerCompares) {
  proves("STATUS-8");
  EXPECT_EQ("none\n", brief(1, {"--at-least", "1.4"}));

  recordHotfix("1.4");
  for (const char* lower : {"1.4", "1.3", "1", "0", "1.10"})
    EXPECT_EQ("1.4\n", brief(0, {"--at-least", lower})) << lower;
  for (const char* higher : {"1.5", "1.4.0", "2", "1.4 ", "a"})
    EXPECT_EQ("1.4\n", brief(1, {"--at-least", higher})) << higher;
}

TEST_F(StatusTest, AskedForAVersionItDoesNotMatterWhatNeedsAttention) {
  proves("STATUS-8");
  recordHotfix("1.4");
  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));

  EXPECT_EQ(2, control({"status", "--doctor"}).status);
  EXPECT_EQ(0, control({"status", "--doctor", "--at-least", "1.4"}).status);
  EXPECT_EQ(1, control({"status", "--doctor", "--at-least", "1.5"}).status);
}

TEST_F(StatusTest, AskedForAVersionTheHighestNumberOfSeveralInstancesCounts) {
  proves("STATUS-8");
  recordHotfix("1.4");
  const Instance second = other("/Applications/Second.app");

  EXPECT_EQ(1, control({"status", "--at-least", "1.4"}).status);
  EXPECT_EQ(0, control({"status", "--at-least", "1.4", _instance.bundle}).status);
  EXPECT_EQ(3, control({"status", "--at-least", "1.4", _instance.bundle, "/missing"}).status);
  told(1, {"--at-least", "1.4", second.bundle});
  _sandbox.writeFile(_instance.info(), "no list");
  EXPECT_EQ(4, control({"status", "--at-least", "1.4", _instance.bundle, "/missing"}).status);
  _sandbox.remove(_instance.bundle);
  _sandbox.remove(second.bundle);
  EXPECT_EQ(3, control({"status", "--at-least", "1.4"}).status);
}

TEST_F(StatusTest, AnEmptyVersionIsRefused) {
  proves("STATUS-8");
  const RunResult result = control({"status", "--at-least", ""});

  EXPECT_EQ(64, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err, HasSubstr("the text is empty"));
}

TEST_F(StatusTest, ControlCharactersOfARecordDoNotReachTheTerminal) {
  proves("CTL-5");
  _sandbox.writeFile(_instance.launcherProperties(), "");
  _sandbox.writeFile(_instance.result(), "rc=\x1b[2J\n");
  const Instance odd = other("/Applications/\x1b]0;x\x07\xff.app");

  const RunResult result = control({"status"});
  EXPECT_THAT(result.out, AllOf(HasSubstr("\\x1b]0;x\\x07\\xff.app"), Not(HasSubstr("\x1b")),
                                Not(HasSubstr("\x07"))));

  const RunResult answer = control({"status", "--json"});
  EXPECT_FALSE(json::parse(answer.out, nullptr, false).is_discarded());
  EXPECT_THAT(answer.out, HasSubstr("\\ufffd.app"));
}

}  // namespace
}  // namespace installer::cli
