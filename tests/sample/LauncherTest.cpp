#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SampleWorld.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

const char* const kPlatform = "com.quillmere.platform_6.2.3";
const char* const kBase = "com.kiv.rcp.base_6.2.3.20121115-1200";
const char* const kHotfix1 = "com.quillmere.hotfix_6.2.3.1";
const char* const kHotfix2 = "com.quillmere.hotfix_6.2.3.2";

std::string siteOf(const fs::path& package) {
  return package.string() + "/../../updates/platform";
}

class LauncherTest : public ::testing::Test {
 protected:
  // Installs the package as the installer's own run does.
  int installHotfix(const fs::path& package) {
    _world.provide(package, "install.hotfix.xml");
    return _world.install(siteOf(package));
  }

  SampleWorld _world;
};

TEST_F(LauncherTest, FirstUpdateOfAnUntouchedInstanceChangesNoFeature) {
  EXPECT_EQ(_world.update(), 0);

  EXPECT_EQ(_world.result(), "rc=0\n");
  EXPECT_THAT(_world.features(), ElementsAre(kPlatform));
  EXPECT_THAT(_world.plugins(), ElementsAre(kBase));
}

TEST_F(LauncherTest, SecondUpdateOfTheSameManifestFindsNothingNew) {
  ASSERT_EQ(_world.update(), 0);

  EXPECT_EQ(_world.update(), 2);

  EXPECT_EQ(_world.result(), "rc=2\n");
}

TEST_F(LauncherTest, InstallPutsFeatureAndPluginInPlace) {
  const fs::path package = _world.makeHotfix("one");

  EXPECT_EQ(installHotfix(package), 0);

  EXPECT_THAT(_world.features(), ElementsAre(kHotfix1, kPlatform));
  EXPECT_THAT(_world.plugins(), ElementsAre(kBase, kHotfix1));
  EXPECT_THAT(_world.applicationOutput(), HasSubstr("hotfix 6.2.3.1 is active"));
}

TEST_F(LauncherTest, InstallIsCarriedOverIntoTheInstalledManifestAndKeepsTheUpdateManifest) {
  const fs::path package = _world.makeHotfix("one");

  ASSERT_EQ(installHotfix(package), 0);

  const std::string installed = contentOf(_world.manifest("install.xml"));
  EXPECT_THAT(installed, HasSubstr("id=\"com.quillmere.hotfix\" version=\"6.2.3.1\""));
  EXPECT_THAT(installed, HasSubstr("id=\"com.quillmere.platform\" version=\"6.2.3\""));
  EXPECT_TRUE(fs::exists(_world.manifest("install.update.xml")));
}

TEST_F(LauncherTest, UninstallTakesFeaturePluginAndManifestEntryOut) {
  const fs::path package = _world.makeHotfix("one");
  ASSERT_EQ(installHotfix(package), 0);

  _world.provide(package, "uninstall.hotfix.xml");
  EXPECT_EQ(_world.update(), 0);

  EXPECT_THAT(_world.features(), ElementsAre(kPlatform));
  EXPECT_THAT(_world.plugins(), ElementsAre(kBase));
  EXPECT_THAT(contentOf(_world.manifest("install.xml")), Not(HasSubstr("com.quillmere.hotfix")));
}

TEST_F(LauncherTest, SecondUninstallRunFindsNothingNew) {
  const fs::path package = _world.makeHotfix("one");
  ASSERT_EQ(installHotfix(package), 0);
  _world.provide(package, "uninstall.hotfix.xml");
  ASSERT_EQ(_world.update(), 0);

  EXPECT_EQ(_world.update(), 2);
}

TEST_F(LauncherTest, ManifestsWithTheSameStampAreToldApartByTheirContent) {
  const fs::path package = _world.makeHotfix("one");
  _world.stamp("0101250900");
  ASSERT_EQ(installHotfix(package), 0);
  _world.provide(package, "uninstall.hotfix.xml");
  ASSERT_EQ(_world.update(), 0);

  EXPECT_EQ(installHotfix(package), 0);

  EXPECT_THAT(_world.features(), Contains(kHotfix1));
}

TEST_F(LauncherTest, SameManifestUnderANewStampIsLookedAtAgain) {
  ASSERT_EQ(_world.update(), 0);

  _world.stamp("3112312359");

  EXPECT_EQ(_world.update(), 0);
}

TEST_F(LauncherTest, NewerVersionReplacesTheInstalledOneInOneRun) {
  ASSERT_EQ(installHotfix(_world.makeHotfix("one")), 0);

  EXPECT_EQ(installHotfix(_world.makeHotfix("two", {"--version", "6.2.3.2"})), 0);

  EXPECT_THAT(_world.features(), ElementsAre(kHotfix2, kPlatform));
  EXPECT_THAT(_world.plugins(), ElementsAre(kBase, kHotfix2));
  EXPECT_THAT(contentOf(_world.manifest("install.xml")), Not(HasSubstr("6.2.3.1")));
}

TEST_F(LauncherTest, WithoutAnOverrideTheFeaturesUrlIsTheSite) {
  const fs::path package = _world.makeHotfix("one");
  _world.provideText(
      "<feature id='com.quillmere.hotfix' version='6.2.3.1' url='file:" + siteOf(package) + "'/>");

  EXPECT_EQ(_world.update(), 0);

  EXPECT_THAT(_world.features(), Contains(kHotfix1));
}

TEST_F(LauncherTest, OverrideWinsOverTheFeaturesUrl) {
  const fs::path package = _world.makeHotfix("one");
  _world.provideText(
      "<feature id='com.quillmere.hotfix' version='6.2.3.1' url='file:/nowhere' "
      "action='install'/>");

  EXPECT_EQ(_world.install(siteOf(package)), 0);
}

TEST_F(LauncherTest, SiteListIsSearchedInOrder) {
  const fs::path package = _world.makeHotfix("a b");
  _world.provide(package, "install.hotfix.xml");

  EXPECT_EQ(_world.install("/nowhere,file:" + siteOf(package)), 0);
}

TEST_F(LauncherTest, SiteWithACommaInItsNameIsOneSite) {
  const fs::path package = _world.makeHotfix("a,b");

  EXPECT_EQ(installHotfix(package), 0);
}

TEST_F(LauncherTest, SiteWithoutTheFeatureFailsAndChangesNothing) {
  const fs::path good = _world.makeHotfix("one");
  ASSERT_EQ(installHotfix(good), 0);
  const std::string installed = contentOf(_world.manifest("install.xml"));

  const fs::path bad = _world.makeHotfix("two", {"--version", "6.2.3.2", "--without-feature"});
  EXPECT_EQ(installHotfix(bad), 13);

  EXPECT_EQ(_world.result(), "rc=13\n");
  EXPECT_THAT(_world.log(), HasSubstr(std::string("no site has the feature ") + kHotfix2));
  EXPECT_THAT(_world.features(), ElementsAre(kHotfix1, kPlatform));
  EXPECT_THAT(_world.plugins(), ElementsAre(kBase, kHotfix1));
  EXPECT_EQ(contentOf(_world.manifest("install.xml")), installed);
}

TEST_F(LauncherTest, SiteWithoutAListedPluginFailsAndChangesNothing) {
  const fs::path package = _world.makeHotfix("one");
  fs::remove_all(package.parent_path().parent_path() / "updates/platform/plugins" / kHotfix1);

  EXPECT_EQ(installHotfix(package), 13);

  EXPECT_THAT(_world.features(), ElementsAre(kPlatform));
}

TEST_F(LauncherTest, PluginWithoutItsArtifactFailsAndChangesNothing) {
  const fs::path package = _world.makeHotfix("one", {"--without-artifacts"});

  EXPECT_EQ(installHotfix(package), 13);

  EXPECT_THAT(_world.log(), HasSubstr(std::string("the site lacks the plug-in ") + kHotfix1));
  EXPECT_THAT(_world.features(), ElementsAre(kPlatform));
}

TEST_F(LauncherTest, PluginThatRequiresAMissingBundleFailsAndChangesNothing) {
  const fs::path package = _world.makeHotfix("one", {"--requires", "com.quillmere.missing"});

  EXPECT_EQ(installHotfix(package), 13);

  EXPECT_THAT(_world.log(), HasSubstr(std::string(kHotfix1) +
                                      " requires com.quillmere.missing, which is not there"));
  EXPECT_THAT(_world.features(), ElementsAre(kPlatform));
  EXPECT_THAT(_world.plugins(), ElementsAre(kBase));
}

TEST_F(LauncherTest, RequiredBundlesAreLookedForAmongThoseThatAreThereAndThoseThatCome) {
  const fs::path package = _world.makeHotfix("one");
  writeText(package / "../../updates/platform/plugins" / kHotfix1 / "META-INF/MANIFEST.MF",
            "Manifest-Version: 1.0\r\n"
            "Require-Bundle: com.kiv.rcp.base;bundle-version=\"[6.2,7)\";optional:=\r\n"
            " true, com.quillm\r\n"
            " ere.hotfix\r\n"
            "Import-Package: com.quillmere.missing\r\n");

  EXPECT_EQ(installHotfix(package), 0);

  EXPECT_THAT(_world.plugins(), ElementsAre(kBase, kHotfix1));
}

TEST_F(LauncherTest, NameThatOnlyBeginsLikeARequiredBundleIsNone) {
  const fs::path package = _world.makeHotfix("one", {"--requires", "com.kiv.rcp"});

  EXPECT_EQ(installHotfix(package), 13);
}

TEST_F(LauncherTest, ManifestThatWithdrawsTakesNothingInAndNothingOut) {
  ASSERT_EQ(installHotfix(_world.makeHotfix("one")), 0);

  EXPECT_EQ(installHotfix(_world.makeHotfix("two", {"--withdraw", "--version", "6.2.3.2"})), 0);

  EXPECT_THAT(_world.features(), ElementsAre(kHotfix1, kPlatform));
}

TEST_F(LauncherTest, FailedRunIsTriedAgain) {
  const fs::path package = _world.makeHotfix("one");
  _world.provide(package, "install.hotfix.xml");
  ASSERT_EQ(_world.install("/nowhere"), 13);

  EXPECT_EQ(_world.install(siteOf(package)), 0);
}

TEST_F(LauncherTest, PluginThatAnotherFeatureListsStays) {
  const fs::path package = _world.makeHotfix("one");
  ASSERT_EQ(installHotfix(package), 0);
  const fs::path other = _world.eclipse() / "features/other_1";
  fs::create_directories(other);
  writeText(other / "feature.xml",
            "<feature id='other' version='1'>"
            "<plugin id='com.quillmere.hotfix' version='6.2.3.1'/></feature>");

  _world.provide(package, "uninstall.hotfix.xml");
  ASSERT_EQ(_world.update(), 0);

  EXPECT_THAT(_world.features(), ElementsAre(kPlatform, "other_1"));
  EXPECT_THAT(_world.plugins(), ElementsAre(kBase, kHotfix1));
}

TEST_F(LauncherTest, CleanUpForgetsTheUpdateManifestAndTheLastRun) {
  ASSERT_EQ(installHotfix(_world.makeHotfix("one")), 0);

  EXPECT_EQ(_world.update("cleanup"), 0);

  EXPECT_FALSE(fs::exists(_world.manifest("install.update.xml")));
  EXPECT_EQ(_world.update(), 0);
  EXPECT_THAT(_world.features(), ElementsAre(kHotfix1, kPlatform));
}

TEST_F(LauncherTest, MissingManifestIsUnusable) {
  fs::remove(_world.manifest("install.xml"));

  EXPECT_EQ(_world.update(), 1);

  EXPECT_EQ(_world.result(), "rc=1\n");
}

TEST_F(LauncherTest, MalformedUpdateManifestIsUnusable) {
  writeText(_world.manifest("install.update.xml"), "<manifest>");

  EXPECT_EQ(_world.update(), 1);

  EXPECT_THAT(_world.log(), HasSubstr("install.update.xml is unusable"));
}

TEST_F(LauncherTest, ProvisioningNeverMakesTheWorkspaceFlag) {
  const fs::path flag = _world.rcpHome() / "systemdata/.config";
  fs::remove_all(flag);

  ASSERT_EQ(_world.update(), 0);

  EXPECT_FALSE(fs::exists(flag));
}

TEST_F(LauncherTest, InstanceUnderAPathWithBlanksAndLettersOfAllKindsWorks) {
  const SampleWorld world({}, "Programme für 中文 & <mehr>");
  const fs::path package = world.makeHotfix("Größe & 修");
  world.provide(package, "install.hotfix.xml");

  EXPECT_EQ(world.install(siteOf(package)), 0);

  EXPECT_THAT(world.features(), Contains(kHotfix1));
}

TEST_F(LauncherTest, RequestsThatLeadOutOfTheInstanceAreRefused) {
  for (const std::string feature :
       {"<feature id='../x' version='1'/>", "<feature id='x' version='1/../../..'/>",
        "<feature id='' version='1'/>", "<feature id='x'/>",
        "<feature id='x' version='1' action='remove'/>"}) {
    _world.provideText(feature);

    EXPECT_EQ(_world.update(), 1) << feature;
  }
}

TEST_F(LauncherTest, FeatureOnASiteThatListsAPluginOutsideIsRefused) {
  const fs::path package = _world.makeHotfix("one");
  const fs::path site = package.parent_path().parent_path() / "updates/platform";
  writeText(site / "features" / kHotfix1 / "feature.xml",
            "<feature id='com.quillmere.hotfix' version='6.2.3.1'>"
            "<plugin id='../../x' version='1'/></feature>");

  EXPECT_EQ(installHotfix(package), 13);
}

TEST_F(LauncherTest, VectorsWithAndWithoutDataFolderAreTaken) {
  EXPECT_EQ(_world.launch(updateVector("update", {}, {})), 0);
  EXPECT_EQ(_world.launch(updateVector("update", {}, {"-data", "/d"})), 2);
  EXPECT_EQ(_world.launch(updateVector("cleanup", {}, {})), 0);
  EXPECT_EQ(_world.launch(updateVector("cleanup", {}, {"-data", "/d"})), 0);
}

TEST_F(LauncherTest, EveryOtherVectorIsRefusedWithALogLine) {
  const std::string operation = "-DprovisioningOperation=update";
  const std::string site = "-DprovUpdateSiteListOverride=file:/s";
  const std::vector<std::vector<std::string>> refused = {
      {},
      {"-provisioningOperation", "update"},
      updateVector("install", {}, {}),
      updateVector("update", {}, {"-data"}),
      updateVector("update", {}, {"-data", "/d", "more"}),
      updateVector("update", {}, {"more"}),
      updateVector("update", {operation, site}, {}),
      updateVector("update", {operation}, {"-data", "/d"}),
      updateVector("update", {site}, {"-data", "/d"}),
      updateVector("update", {site, operation}, {"-data", "/d"}),
      updateVector("cleanup", {operation, site}, {"-data", "/d"}),
  };

  for (const std::vector<std::string>& arguments : refused) {
    EXPECT_EQ(_world.launch(arguments), 1) << ::testing::PrintToString(arguments);
    EXPECT_EQ(_world.result(), "rc=1\n");
  }

  EXPECT_THAT(_world.log(), HasSubstr("not a provisioning start (2 arguments), rc=1"));
}

TEST_F(LauncherTest, VectorIsRefusedWhenAnyFixedArgumentDiffers) {
  const std::vector<std::string> good = updateVector("update", {}, {"-data", "/d"});
  for (std::size_t at = 0; at < good.size(); ++at) {
    const bool isFree = good[at] == "de_DE" || good[at] == "/d";
    std::vector<std::string> changed = good;
    changed[at] += "x";

    EXPECT_EQ(_world.launch(changed) == 1, !isFree) << changed[at];
  }
}

}  // namespace
