#include <gmock/gmock.h>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

// Small turns of the rules that meet in few runs.
class DetailsTest : public InstallerTest {
 protected:
  static constexpr const char* kGlobals =
      "/Users/alice/Library/Preferences/.GlobalPreferences.plist";

  std::string locale(const std::string& name) const {
    return xmlList(ListValue::dictionary({{"AppleLocale", ListValue::string(name)}}));
  }
};

TEST_F(DetailsTest, BothRemovalRunsUseTheLocaleReadOnceAndLaterRunsReadItAgain) {
  proves("USER-7");
  recordHotfix("1.4");
  _sandbox.writeFile(kGlobals, locale("de_DE"), 0666);
  _sandbox.script(
      "rcplauncher", 1,
      ChildScript().write(kGlobals, locale("fr_FR")).write(_instance.result(), "rc=0\n"));

  ASSERT_EQ(0, install().status);

  std::vector<std::string> locales;
  for (const ChildRecord& launch : _sandbox.children("rcplauncher"))
    locales.push_back(launch.arguments.at(6));
  EXPECT_THAT(locales, ElementsAre("de_DE", "de_DE", "fr_FR", "fr_FR"));
}

TEST_F(DetailsTest, HomeInTheListIsOverwrittenByTheDerivedOne) {
  proves("BUNDLE-2");
  _package.set("rcpHome", "/elsewhere");
  writePreferences();

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists("/elsewhere"));
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(DetailsTest, ResolvedDestinationLosesItsTrailingSlash) {
  proves("BUNDLE-8");
  _package.set("allowMultiInstance", ListValue::boolean(false));
  writePreferences();
  _sandbox.remove(_instance.deploy("install.xml"));

  EXPECT_EQ(1, _sandbox.run({_package.folder, "/Applications/"}).status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
}

TEST_F(DetailsTest, ResolvedDestinationMayBeTheRoot) {
  proves("BUNDLE-8");
  _package.set("allowMultiInstance", ListValue::boolean(false));
  writePreferences();

  EXPECT_EQ(1, _sandbox.run({_package.folder, "/"}).status);

  EXPECT_EQ((ErrorRecord{8, {"/", "Quillmere.app"}}), errorRecord());
}

TEST_F(DetailsTest, CodeSevenJoinsAPathWithOneSlash) {
  proves("VERSION-2");
  recordHotfix("9");

  EXPECT_EQ(1, _sandbox.run({_package.folder, "/Applications/"}).status);

  EXPECT_EQ((ErrorRecord{7, {"/Applications/Quillmere.app"}}), errorRecord());
}

TEST_F(DetailsTest, TildeInTheDestinationIsNoHome) {
  proves("ARGS-5");
  Instance athome{"/Users/alice/Apps/Quillmere.app"};
  buildInstance(athome);
  RunOptions options;
  options.directory = "/Users/bob";

  EXPECT_EQ(1, _sandbox.run({_package.folder, "~/Apps"}, options).status);

  EXPECT_EQ((ErrorRecord{8, {"~/Apps", "Quillmere.app"}}), errorRecord());
}

TEST_F(DetailsTest, TildeInTheDataReachesTheLauncherAsItStands) {
  proves("ARGS-5");
  _sandbox.makeFolder("/Users/alice/ws/.config");

  EXPECT_EQ(0, installWithData("~/ws").status);

  EXPECT_EQ("~/ws", _sandbox.children("rcplauncher").at(0).arguments.back());
  EXPECT_THAT(_sandbox.children("rcplauncher"), SizeIs(3)) << "no flag under that very path";
}

TEST_F(DetailsTest, EmptyPackageVersionSortsBeforeEveryInstalledOne) {
  proves("VERSION-5");
  _package.set("version", "");
  writePreferences();
  recordHotfix("1.5");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(7, errorRecord().code);
}

TEST_F(DetailsTest, EmptyPackageVersionIsRecorded) {
  proves("VERSION-5");
  _package.set("version", "");
  writePreferences();

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("", recorded("hotfixVersion"));
}

TEST_F(DetailsTest, KeyStoreThatCannotBeCopiedIsLoggedAllTheSame) {
  proves("KEYSTORE-3");
  _sandbox.remove(_package.deployFile(".keystore"));
  _sandbox.makePipe(_package.deployFile(".keystore"));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(),
              Contains("Copy keystore file '.keystore' from " + _package.deploy(".keystore") +
                       " to " + _instance.deploy(".keystore") + "."));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy(".keystore")));
}

TEST_F(DetailsTest, RecordsMadeAfterTheRestoringKeepTheMasksMode) {
  proves("INSTALL-13", "RIGHTS-8");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=1\n"));
  RunOptions options;
  options.mask = 027;

  EXPECT_EQ(1, install(options).status);

  EXPECT_EQ(0640u, _sandbox.mode(_instance.info()));
}

TEST_F(DetailsTest, TraceIsReadableUnderEveryMask) {
  proves("LOG-6");
  for (const mode_t mask : {mode_t{0}, mode_t{077}, mode_t{0777}}) {
    _sandbox.remove(kTrace);
    RunOptions options;
    options.mask = mask;

    EXPECT_EQ(0, install(options).status);

    EXPECT_EQ(0644u, _sandbox.mode(kTrace)) << mask;
  }
}

TEST_F(DetailsTest, RewrittenFilesKeepTheirOwnerUntilTheRestoring) {
  proves("RIGHTS-8");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.giveTo(_instance.installProperties(), CliSandbox::kBob, CliSandbox::kBob);
  _sandbox.setMode(_instance.installProperties(), 0640);
  // The workflow stops before it restores anything.
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(CliSandbox::kBob, _sandbox.ownership(_instance.installProperties()).owner);
  EXPECT_EQ(0640u, _sandbox.mode(_instance.installProperties()));
}

TEST_F(DetailsTest, InstanceBehindALinkIsPatched) {
  proves("BUNDLE-9");
  _sandbox.makeLink("/apps", "/Applications");

  EXPECT_EQ(0, _sandbox.run({_package.folder, "/apps"}).status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ("/apps/Quillmere.app/Contents/MacOS/rcp",
            listAt(kConfiguration).stringAt("pathToRcpHome"));
}

TEST_F(DetailsTest, PackageBehindALinkIsUsedUnderItsGivenName) {
  proves("BUNDLE-9");
  _sandbox.makeLink("/fix", "/Volumes/HF/install/Fix.pkg");
  _sandbox.writeFile("/Volumes/HF/install/deploy/install.hotfix.xml", kSimpleManifest);

  EXPECT_EQ(0, _sandbox.run({"/fix", _destination}).status);

  // ".." behind a link leads beside the link's target.
  EXPECT_THAT(*_sandbox.readFile(_instance.deploy("install.update.xml")),
              HasSubstr("url=\"file:/fix/updates\""));
}

TEST_F(DetailsTest, RelativePackageStaysRelativeInTheManifest) {
  proves("BUNDLE-9");
  RunOptions options;
  options.directory = "/Volumes/HF";

  EXPECT_EQ(0, _sandbox.run({"install/Fix.pkg", _destination}, options).status);

  EXPECT_THAT(*_sandbox.readFile(_instance.deploy("install.update.xml")),
              HasSubstr("url=\"file:install/Fix.pkg/updates\""));
}

TEST_F(DetailsTest, EmptyJavaHomeOfTheEnvironmentIsNone) {
  _sandbox.installChild("/opt/jdk/bin/java");
  _sandbox.makeLink("/usr/bin/java", "/opt/jdk/bin/java");
  RunOptions options;
  options.set("JAVA_HOME", "");

  EXPECT_EQ(0, install(options).status);

  ASSERT_THAT(_sandbox.children("java"), SizeIs(1));
  EXPECT_EQ("/opt/jdk/bin/java", _sandbox.children("java")[0].executable);
}

TEST_F(DetailsTest, UpgradeReplacesWhatTheOlderHotfixLeft) {
  proves("SUCCESS-3");
  ASSERT_EQ(0, install().status);
  _package.set("version", "1.6");
  writePreferences();
  _sandbox.writeFile(_package.deployFile("uninstall.hotfix.xml"), "<newer/>");
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), "c=5\n");
  _sandbox.writeFile(_package.folder + "/Contents/Info.plist",
                     xmlList(ListValue::dictionary(
                         {{"CFBundleIdentifier", ListValue::string("com.kiv.hotfix.sixteen")}})));
  _sandbox.installChild("/usr/sbin/pkgutil");

  const RunResult result = install();

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(_sandbox.children("pkgutil").at(0).arguments,
              ElementsAre("--forget", "com.kiv.hotfix.fifteen"));
  EXPECT_EQ("<newer/>", _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ("a=1\nb=3\nc=5\n", _sandbox.readFile(_instance.customization()));
  EXPECT_EQ("1.6", recorded("hotfixVersion"));
  EXPECT_EQ("com.kiv.hotfix.sixteen", recorded("installedHotfixBundleID"));
}

TEST_F(DetailsTest, RefusedDowngradeLeavesTheNewerHotfixInForce) {
  proves("VERSION-7");
  ASSERT_EQ(0, install().status);
  _package.set("version", "1.4");
  writePreferences();
  const std::string customization = *_sandbox.readFile(_instance.customization());

  const RunResult result = install();

  EXPECT_EQ(1, result.status);
  EXPECT_EQ((ErrorRecord{7, {"/Applications/Quillmere.app"}}), errorRecord());
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ(customization, _sandbox.readFile(_instance.customization()));
  EXPECT_TRUE(_sandbox.exists(_instance.deploy("uninstall.hotfix.xml")));
}

}  // namespace
}  // namespace installer::cli
