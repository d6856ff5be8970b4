#include "workflow/HotfixPackage.h"

#include <gmock/gmock.h>

#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using PropertyList::Dictionary;

HotfixPackage described(const Dictionary& properties) {
  return HotfixPackage::describedBy(properties);
}

ResolvedPackage::Locations locationsOf(const Dictionary& properties) {
  return HotfixPackage::resolvedFor("${package}", properties).locations;
}

TEST(HotfixPackageTest, EmptyDescriptionTellsNothing) {
  const HotfixPackage package = described({});

  EXPECT_EQ(package.bundleName, std::nullopt);
  EXPECT_EQ(package.frameworkPath, std::nullopt);
  EXPECT_EQ(package.version, std::nullopt);
  EXPECT_FALSE(package.allowMultiInstance);
  EXPECT_FALSE(package.skipRunningCheck);
}

TEST(HotfixPackageTest, EntriesAreTakenAsTheyStand) {
  const HotfixPackage package = described({{"bundleName", "Q ${package}"},
                                           {"frameworkPath", "Contents/MacOS"},
                                           {"version", ""},
                                           {"allowMultiInstance", "yes"},
                                           {"SKIPRUNNINGCHECK", "true"}});

  EXPECT_EQ(package.bundleName, "Q ${package}");
  EXPECT_EQ(package.frameworkPath, "Contents/MacOS");
  EXPECT_EQ(package.version, "") << "only a location counts as absent when it is empty";
  EXPECT_TRUE(package.allowMultiInstance);
  EXPECT_TRUE(package.skipRunningCheck);
}

TEST(HotfixPackageTest, ValuesOfOtherTypesAreAbsent) {
  const HotfixPackage package = described({{"bundleName", 1},
                                           {"frameworkPath", true},
                                           {"version", 1.5},
                                           {"allowMultiInstance", Dictionary()},
                                           {"SKIPRUNNINGCHECK", true}});

  EXPECT_EQ(package.bundleName, std::nullopt);
  EXPECT_EQ(package.frameworkPath, std::nullopt);
  EXPECT_EQ(package.version, std::nullopt);
  EXPECT_FALSE(package.allowMultiInstance);
  EXPECT_FALSE(package.skipRunningCheck);
}

TEST(HotfixPackageTest, RcpHomeNeedsTheFrameworkPath) {
  proves("BUNDLE-2");
  EXPECT_EQ(described({{"frameworkPath", "/Contents/MacOS/"}}).rcpHomeIn("/A/Q.app"),
            "/A/Q.app/Contents/MacOS/rcp");
  EXPECT_EQ(described({{"frameworkPath", ""}}).rcpHomeIn("/A/Q.app"), "/A/Q.app/rcp");
  EXPECT_EQ(described({}).rcpHomeIn("/A/Q.app"), std::nullopt);
}

TEST(HotfixPackageTest, ApplicationNeedsTheBundleName) {
  proves("BUNDLE-1");
  const HotfixPackage package = described({{"bundleName", "Quillmere"}});
  EXPECT_EQ(package.applicationName(), "Quillmere.app");
  EXPECT_EQ(package.bundleIn("/A/"), "/A/Quillmere.app");
  EXPECT_EQ(described({}).applicationName(), std::nullopt);
  EXPECT_EQ(described({}).bundleIn("/A"), std::nullopt);
}

TEST(HotfixPackageTest, HomeBelowAFolderNeedsBothNames) {
  proves("BUNDLE-2");
  EXPECT_EQ(described({{"bundleName", "Q"}, {"frameworkPath", "x"}}).rcpHomeBelow("/A"),
            "/A/Q.app/x/rcp");
  EXPECT_EQ(described({{"bundleName", "Q"}}).rcpHomeBelow("/A"), std::nullopt);
  EXPECT_EQ(described({{"frameworkPath", "x"}}).rcpHomeBelow("/A"), std::nullopt);
}

TEST(HotfixPackageTest, LocationsHaveDefaults) {
  proves("PACKAGE-5", "PACKAGE-6");
  const auto expectDefaults = [](const ResolvedPackage::Locations& locations) {
    EXPECT_EQ(locations.installManifest, "${package}/../deploy/install.hotfix.xml");
    EXPECT_EQ(locations.uninstallManifest, "${package}/../deploy/uninstall.hotfix.xml");
    EXPECT_EQ(locations.customization, "${package}/../deploy/plugin_customization.ini");
    EXPECT_EQ(locations.updateSites, "${package}/../../updates/platform");
    EXPECT_EQ(locations.keyStores, "${package}/../deploy");
    EXPECT_EQ(locations.extras, "${package}/../deploy/extras");
  };
  const auto all = [](const PropertyList::Value& value) {
    Dictionary properties;
    for (const char* key : {"pathToHotfixManifest", "pathToHotfixUninstallManifest",
                            "pathToPluginCustomization", "updateSiteList", "keystore", "extras"})
      properties.set(key, value);
    return properties;
  };

  expectDefaults(locationsOf({}));
  expectDefaults(locationsOf(all("")));
  expectDefaults(locationsOf(all(5)));
}

TEST(HotfixPackageTest, LocationsOfTheDescriptionAreTaken) {
  const ResolvedPackage::Locations locations = locationsOf({{"pathToHotfixManifest", "m"},
                                                            {"pathToHotfixUninstallManifest", "u"},
                                                            {"pathToPluginCustomization", "c"},
                                                            {"updateSiteList", "s"},
                                                            {"keystore", "k"},
                                                            {"extras", "e"}});

  EXPECT_EQ(locations.installManifest, "m");
  EXPECT_EQ(locations.uninstallManifest, "u");
  EXPECT_EQ(locations.customization, "c");
  EXPECT_EQ(locations.updateSites, "s");
  EXPECT_EQ(locations.keyStores, "k");
  EXPECT_EQ(locations.extras, "e");
}

TEST(HotfixPackageTest, ResolvedTextsHoldThePackagesPath) {
  proves("PACKAGE-8");
  const ResolvedPackage package =
      HotfixPackage::resolvedFor("/HF.pkg", {{"bundleName", "${package}"},
                                             {"frameworkPath", "f${package}"},
                                             {"version", "${package}2"},
                                             {"keystore", "${package}/k"}});

  EXPECT_EQ(package.bundleName, "/HF.pkg");
  EXPECT_EQ(package.frameworkPath, "f/HF.pkg");
  EXPECT_EQ(package.version, "/HF.pkg2");
  EXPECT_EQ(package.locations.installManifest, "/HF.pkg/../deploy/install.hotfix.xml");
  EXPECT_EQ(package.locations.keyStores, "/HF.pkg/k");
  EXPECT_EQ(package.locations.extras, "/HF.pkg/../deploy/extras");
}

TEST(HotfixPackageTest, DefaultsFollowTheManifestBeforeItIsResolved) {
  const ResolvedPackage package =
      HotfixPackage::resolvedFor("/HF/HF.pkg", {{"pathToHotfixManifest", "${package}"}});

  EXPECT_EQ(package.locations.installManifest, "/HF/HF.pkg");
  EXPECT_EQ(package.locations.keyStores, "");
  EXPECT_EQ(package.locations.extras, "extras");
}

TEST(HotfixPackageTest, EntriesNeedAPackageAndAList) {
  Sandbox sandbox;
  sandbox.makeFolder("empty");
  sandbox.writePlist("HF.pkg/Contents/Resources/hotfix.plist", {{"version", "1"}});

  EXPECT_EQ(HotfixPackage::properties(sandbox.path("HF.pkg")), (Dictionary{{"version", "1"}}));
  EXPECT_EQ(HotfixPackage::properties(sandbox.path("empty")), std::nullopt);
  EXPECT_EQ(HotfixPackage::properties(sandbox.path("none")), std::nullopt);
  EXPECT_EQ(HotfixPackage::properties(std::nullopt), std::nullopt);
}

TEST(HotfixPackageTest, EntriesThatAreLackingAreToldApart) {
  using Lack = HotfixPackage::Lack;
  Sandbox sandbox;
  sandbox.makeFolder("empty");
  sandbox.write("none.pkg/Contents/Resources/hotfix.plist", "no list");
  const std::vector<std::pair<std::optional<std::string>, Lack>> lacking = {
      {std::nullopt, Lack::package},
      {sandbox.path("none"), Lack::package},
      {sandbox.path("empty"), Lack::description},
      {sandbox.path("none.pkg"), Lack::propertyList}};
  for (const auto& [package, expected] : lacking) {
    Lack lack = expected == Lack::package ? Lack::description : Lack::package;

    EXPECT_EQ(HotfixPackage::properties(package, &lack), std::nullopt);

    EXPECT_EQ(lack, expected) << package.value_or("none at all");
  }
}

}  // namespace
}  // namespace installer::test
