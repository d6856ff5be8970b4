#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>

#include "hotfix/instance/InstanceService.h"
#include "hotfix/platform/ToldOnce.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kManifest =
    "<m><domain-object><object-data><install><installfeature><requirements>"
    "<feature url=\"${installer.root}/x\"/>"
    "</requirements></installfeature></install></object-data></domain-object></m>";

class InstallManifestsTest : public InstanceFixture {
 protected:
  InstallManifestsTest() {
    _sandbox.write("pkg/m.xml", kManifest);
    _sandbox.clearLog();
  }

  std::string manifest() const { return _sandbox.path("pkg/m.xml"); }
  std::string root() const { return _sandbox.path("pkg"); }
  std::string deployed(const std::string& name) const {
    return _sandbox.read(inHome("deploy/" + name));
  }
  std::string told(const std::string& name, const std::string& rest) const {
    return "\"" + homePath(name) + "\" cannot be " + rest;
  }
  std::string copyTold(const std::string& from, const std::string& name,
                       const std::string& reason) const {
    return "\"" + from + "\" cannot be copied to \"" + homePath("deploy/" + name) + "\": " + reason;
  }
  std::string launcherFile() const { return _sandbox.read(inHome("rcplauncher.properties")); }
  InstanceService quietService(const std::optional<std::string>& data = std::nullopt) {
    InstanceService service(home(), data);
    _sandbox.clearLog();
    return service;
  }
};

TEST_F(InstallManifestsTest, ManifestVersionAndInstallIdAreSetAlone) {
  proves("STAMP-3");
  _sandbox.write(inHome("rcplauncher.properties"), "# comment\nb=1\na=2\n");

  quietService().updateProvisionManifestVersion("0503130907");
  quietService().updateInstallID("0503130908");

  EXPECT_EQ(launcherFile(),
            "b=1\na=2\nprovisioning.manifest.version=0503130907\nrcp.install.id=0503130908\n");
}

TEST_F(InstallManifestsTest, LinksToManifestsInPackageAndInstanceAreCopiedAsTheFiles) {
  proves("FILES-22");
  _sandbox.write("hf/Fix.pkg/real.xml", kManifest);
  _sandbox.makeLink("hf/deploy/packages.xml", "../Fix.pkg/real.xml");
  _sandbox.write(inHome("../kept/real.xml"), "<instances/>");
  _sandbox.makeLink("hf/deploy/instances.xml", homePath("../kept/real.xml"));
  _sandbox.write("hf/deploy/real.xml", "<beside/>");
  _sandbox.makeLink("hf/other/deploys.xml", "../deploy/real.xml");
  InstanceService service = quietService();
  service.setInstallPackage(_sandbox.path("hf/Fix.pkg"));

  EXPECT_TRUE(service.copyUpdateManifest(_sandbox.path("hf/deploy/packages.xml"), root()));
  EXPECT_TRUE(service.copyHotfixUninstallManifest(_sandbox.path("hf/deploy/instances.xml")));
  EXPECT_TRUE(service.copyManifest(_sandbox.path("hf/other/deploys.xml")));

  EXPECT_THAT(deployed("install.update.xml"), HasSubstr("file:" + root() + "/x"));
  EXPECT_EQ(_sandbox.read("hf/Fix.pkg/real.xml"), kManifest);
  EXPECT_EQ(deployed("uninstall.hotfix.xml"), "<instances/>");
  EXPECT_EQ(deployed("deploys.xml"), "<beside/>");
  for (const char* name : {"install.update.xml", "uninstall.hotfix.xml", "deploys.xml"})
    EXPECT_TRUE(std::filesystem::is_regular_file(
        std::filesystem::symlink_status(homePath(std::string("deploy/") + name))))
        << name;
}

TEST_F(InstallManifestsTest, LinksThatLeadElsewhereAreNoManifests) {
  proves("FILES-22");
  _sandbox.write("secret.xml", kManifest);
  _sandbox.makeLink("pkg/link.xml", "../secret.xml");
  _sandbox.write("pkg/real.xml", kManifest);
  _sandbox.makeLink("deploy/unnamed.xml", "../pkg/real.xml");
  const std::string link = _sandbox.path("pkg/link.xml");
  InstanceService service = quietService();

  EXPECT_FALSE(service.copyManifest(_sandbox.path("deploy/unnamed.xml"))) << "of no named package";
  service.setInstallPackage(root());
  EXPECT_FALSE(service.copyUpdateManifest(link, root()));
  EXPECT_FALSE(service.copyInstallManifest(link, std::nullopt));
  EXPECT_FALSE(service.copyHotfixUninstallManifest(link));
  EXPECT_TRUE(service.copyManifest(_sandbox.path("deploy/unnamed.xml")));

  for (const char* name : {"install.update.xml", "install.xml", "uninstall.hotfix.xml"})
    EXPECT_FALSE(_sandbox.exists(inHome(std::string("deploy/") + name))) << name;
}

TEST_F(InstallManifestsTest, BackupOfALinkedManifestHoldsItsContent) {
  _sandbox.remove(inHome("deploy/install.xml"));
  _sandbox.write(inHome("kept.xml"), "<kept/>");
  _sandbox.makeLink(inHome("deploy/install.xml"), "../kept.xml");
  _sandbox.write(inHome("rcplauncher.properties"), "provisioning.manifest.version=1\n");

  quietService().backupInstallManifest();

  EXPECT_EQ(deployed("install.1.xml"), "<kept/>");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallManifestsTest, WithoutLauncherPropertiesNothingIsSet) {
  proves("STAMP-3");
  _sandbox.remove(inHome("rcplauncher.properties"));

  quietService().updateProvisionManifestVersion("1");
  quietService().updateInstallID("1");

  EXPECT_FALSE(_sandbox.exists(inHome("rcplauncher.properties")));
}

TEST_F(InstallManifestsTest, ManifestVersionIsCarriedIntoBothInstallIds) {
  proves("STAMP-4");
  _sandbox.write(inHome("rcplauncher.properties"), "provisioning.manifest.version=V\nx=1\n");
  _sandbox.write("data/.config/rcpinstall.properties", "rcp.install.id=old\ny=2\n");

  quietService(_sandbox.path("data")).updateInstallIDWithProvManVer();

  EXPECT_EQ(launcherFile(), "provisioning.manifest.version=V\nx=1\nrcp.install.id=V\n");
  EXPECT_EQ(_sandbox.read("data/.config/rcpinstall.properties"), "rcp.install.id=V\ny=2\n");
}

TEST_F(InstallManifestsTest, WithoutDataSettingsTheLauncherKeepsItsIdToo) {
  proves("STAMP-4");
  _sandbox.makeFolder("data/.config");
  const std::string before = launcherFile();

  quietService(_sandbox.path("data")).updateInstallIDWithProvManVer();
  quietService().updateInstallIDWithProvManVer();

  EXPECT_EQ(launcherFile(), before);
}

TEST_F(InstallManifestsTest, WithoutLauncherPropertiesTheDataKeepsItsId) {
  proves("STAMP-4");
  _sandbox.remove(inHome("rcplauncher.properties"));
  _sandbox.write("data/.config/rcpinstall.properties", "rcp.install.id=old\n");

  quietService(_sandbox.path("data")).updateInstallIDWithProvManVer();

  EXPECT_EQ(_sandbox.read("data/.config/rcpinstall.properties"), "rcp.install.id=old\n");
  EXPECT_FALSE(_sandbox.exists(inHome("rcplauncher.properties")));
}

TEST_F(InstallManifestsTest, AbsentManifestVersionIsRefusedForBothFiles) {
  proves("STAMP-5");
  _sandbox.write(inHome("rcplauncher.properties"), "rcp.install.id=a\n");
  _sandbox.write("data/.config/rcpinstall.properties", "# c\nrcp.install.id=b\n");

  quietService(_sandbox.path("data")).updateInstallIDWithProvManVer();

  EXPECT_EQ(launcherFile(), "rcp.install.id=a\n");
  EXPECT_EQ(_sandbox.read("data/.config/rcpinstall.properties"), "rcp.install.id=b\n");
  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre(HasSubstr("rcp.install.id"), HasSubstr("rcp.install.id")));
}

TEST_F(InstallManifestsTest, BackupCarriesTheManifestVersion) {
  proves("MANIFEST-1");
  _sandbox.write(inHome("deploy/install.xml"), "now");

  quietService().backupInstallManifest();

  EXPECT_EQ(deployed("install.0101130000.xml"), "now");
  EXPECT_EQ(deployed("install.xml"), "now");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallManifestsTest, BackupWithoutVersionIsCalledOld) {
  proves("MANIFEST-1");
  _sandbox.write(inHome("rcplauncher.properties"), "x=1\n");

  quietService().backupInstallManifest();

  EXPECT_TRUE(_sandbox.exists(inHome("deploy/install.old.xml")));
}

TEST_F(InstallManifestsTest, ExistingBackupStays) {
  proves("MANIFEST-1");
  _sandbox.write(inHome("deploy/install.0101130000.xml"), "first");

  quietService().backupInstallManifest();

  EXPECT_EQ(deployed("install.0101130000.xml"), "first");
}

TEST_F(InstallManifestsTest, VersionThatLeadsElsewhereIsNotBackedUp) {
  proves("MANIFEST-2");
  _sandbox.makeFolder(inHome("deploy/install.x"));
  _sandbox.write(inHome("rcplauncher.properties"),
                 "provisioning.manifest.version=x/../../../planted\n");

  quietService().backupInstallManifest();

  EXPECT_FALSE(_sandbox.exists(inHome("../planted.xml")));
  EXPECT_FALSE(_sandbox.exists(inHome("planted.xml")));
  EXPECT_THAT(numberedLines(),
              ElementsAre("4 Not able to back up install manifest of version x/../../../planted."));
}

TEST_F(InstallManifestsTest, NothingIsBackedUpWithoutManifestOrLauncherProperties) {
  proves("MANIFEST-2");
  _sandbox.remove(inHome("deploy/install.xml"));
  quietService().backupInstallManifest();
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/install.0101130000.xml")));

  _sandbox.write(inHome("deploy/install.xml"), "x");
  _sandbox.remove(inHome("rcplauncher.properties"));
  quietService().backupInstallManifest();
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/install.old.xml")));
}

TEST_F(InstallManifestsTest, LinkToNothingInTheInstallManifestsPlaceIsNotBackedUp) {
  proves("MANIFEST-2");
  _sandbox.remove(inHome("deploy/install.xml"));
  _sandbox.makeLink(inHome("deploy/install.xml"), "nothing");

  quietService().backupInstallManifest();

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/install.0101130000.xml")));
}

TEST_F(InstallManifestsTest, RootThatCannotBeLookedAtIsAFailureAndTold) {
  proves("MANIFEST-14");
  InstanceService service = quietService();
  _sandbox.files().failReading(root(), EIO);

  EXPECT_FALSE(service.copyUpdateManifest(manifest(), root()));

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("\"" + root() + "\" cannot be looked at: Input/output error"));
}

TEST_F(InstallManifestsTest, CopiedManifestThatCannotBeReadIsAFailureAndTold) {
  proves("MANIFEST-14");
  InstanceService service = quietService();
  _sandbox.files().failReading(homePath("deploy/install.update.xml"), EIO);

  EXPECT_FALSE(service.copyUpdateManifest(manifest(), root()));

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre(told("deploy/install.update.xml", "read: Input/output error")));
  EXPECT_EQ(deployed("install.update.xml"), kManifest);
}

TEST_F(InstallManifestsTest, BackupTellsSettingsThatCannotBeReadAndIsCalledOld) {
  proves("STAMP-6");
  _sandbox.write(inHome("deploy/install.xml"), "<now/>");
  InstanceService service = quietService();
  _sandbox.remove(inHome("rcplauncher.properties"));
  _sandbox.makeFolder(inHome("rcplauncher.properties"));

  service.backupInstallManifest();

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre(told("rcplauncher.properties", "read: Is a directory")));
  EXPECT_EQ(deployed("install.old.xml"), "<now/>");
}

TEST_F(InstallManifestsTest, SettingsThatCannotBeReadKeepAllAndAreToldOnce) {
  proves("STAMP-6");
  const ToldOnce lines;
  const std::string before = launcherFile();
  _sandbox.write("data/.config/rcpinstall.properties", "# theirs\ny=2\n");
  InstanceService service = quietService(_sandbox.path("data"));
  _sandbox.files().failReading(homePath("rcplauncher.properties"), EIO);

  service.updateProvisionManifestVersion("1");
  service.updateInstallID("1");
  service.updateInstallIDWithProvManVer();

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 " + told("rcplauncher.properties", "looked at: Input/output error")));
  EXPECT_EQ(launcherFile(), before);
  EXPECT_EQ(_sandbox.read("data/.config/rcpinstall.properties"), "# theirs\ny=2\n");
}

TEST_F(InstallManifestsTest, SettingsThatAreNoFileStayAndAreToldOnce) {
  proves("STAMP-6");
  const ToldOnce lines;
  _sandbox.remove(inHome("rcplauncher.properties"));
  _sandbox.makeFolder(inHome("rcplauncher.properties"));
  _sandbox.write("data/.config/rcpinstall.properties", "# theirs\ny=2\n");
  InstanceService service = quietService(_sandbox.path("data"));

  service.updateInstallIDWithProvManVer();
  service.updateProvisionManifestVersion("1");
  service.updateInstallID("1");

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 " + told("rcplauncher.properties", "read: Is a directory")));
  EXPECT_EQ(_sandbox.read("data/.config/rcpinstall.properties"), "# theirs\ny=2\n");
}

TEST_F(InstallManifestsTest, DataSettingsThatCannotBeReadStayAndAreTold) {
  proves("STAMP-6");
  _sandbox.makeFolder("data/.config/rcpinstall.properties");

  quietService(_sandbox.path("data")).updateInstallIDWithProvManVer();

  EXPECT_THAT(launcherFile(), HasSubstr("rcp.install.id=0101130000"));
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 \"" + _sandbox.path("data/.config/rcpinstall.properties") +
                          "\" cannot be read: Is a directory"));
}

TEST_F(InstallManifestsTest, BackupThatFailsIsPassedOverWithItsReason) {
  proves("MANIFEST-3");
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kWrite, ENOSPC);

  service.backupInstallManifest();

  EXPECT_TRUE(_sandbox.files().hasFailed());
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/install.0101130000.xml")));
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 " + copyTold(homePath("deploy/install.xml"), "install.0101130000.xml",
                                          "No space left on device")));
}

TEST_F(InstallManifestsTest, UpdateManifestIsReplacedAndResolved) {
  proves("MANIFEST-5");
  _sandbox.write(inHome("deploy/install.update.xml"), "of an earlier run");

  EXPECT_TRUE(quietService().copyUpdateManifest(manifest(), root()));

  EXPECT_THAT(deployed("install.update.xml"), HasSubstr("url=\"file:" + root() + "/x\""));
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("6 Copy install manifest to " + homePath("deploy/install.update.xml") + ".",
                  "6 Update ${installer.root}.", "6 Get ${installer.root} : file:" + root() + ".",
                  "6 Save install manifest."));
}

TEST_F(InstallManifestsTest, WithoutRootTheManifestIsCopiedByteForByte) {
  proves("MANIFEST-6");
  EXPECT_TRUE(quietService().copyUpdateManifest(manifest(), std::nullopt));

  EXPECT_EQ(deployed("install.update.xml"), kManifest);
  EXPECT_THAT(numberedLines(), ElementsAre("6 Copy install manifest to " +
                                           homePath("deploy/install.update.xml") + "."));
}

TEST_F(InstallManifestsTest, RootThatIsNotOnDiskLeavesThePlaceholder) {
  proves("MANIFEST-6");
  EXPECT_TRUE(quietService().copyUpdateManifest(manifest(), _sandbox.path("missing")));

  EXPECT_EQ(deployed("install.update.xml"), kManifest);
  EXPECT_EQ(_sandbox.log().size(), 1U);
}

TEST_F(InstallManifestsTest, RootMayBeAFile) {
  proves("MANIFEST-5");
  _sandbox.write("root.pkg", "");

  EXPECT_TRUE(quietService().copyUpdateManifest(manifest(), _sandbox.path("root.pkg")));

  EXPECT_THAT(deployed("install.update.xml"),
              HasSubstr("url=\"file:" + _sandbox.path("root.pkg") + "/x\""));
}

TEST_F(InstallManifestsTest, ResolvedManifestThatCannotBeSavedStaysAsCopiedAndFails) {
  proves("MANIFEST-9");
  FailingFileManager& files = _sandbox.files();
  InstanceService service = quietService();
  // The copy is whole once it gets its name; the next bytes are the resolved ones.
  files.beforeNext(FileOperation::kRename, [&] { files.failNext(FileOperation::kWrite, ENOSPC); });

  EXPECT_FALSE(service.copyUpdateManifest(manifest(), root()));

  EXPECT_EQ(deployed("install.update.xml"), kManifest);
  EXPECT_THAT(linesAt(LogLevel::info), ::testing::Contains("Save install manifest."));
  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre(told("deploy/install.update.xml", "written: No space left on device")));
}

TEST_F(InstallManifestsTest, InstallManifestHasItsOwnName) {
  proves("MANIFEST-10");
  EXPECT_TRUE(quietService().copyInstallManifest(manifest(), std::nullopt));

  EXPECT_EQ(deployed("install.xml"), kManifest);
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/install.update.xml")));
}

TEST_F(InstallManifestsTest, MissingManifestFailsAndTheOldOneIsGone) {
  proves("MANIFEST-8");
  _sandbox.write(inHome("deploy/install.update.xml"), "old");

  EXPECT_FALSE(quietService().copyUpdateManifest(_sandbox.path("missing.xml"), root()));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/install.update.xml")));
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("6 Copy install manifest to " + homePath("deploy/install.update.xml") + ".",
                  "3 " + copyTold(_sandbox.path("missing.xml"), "install.update.xml",
                                  "No such file or directory")));
}

// Everything that is replaced whole: the operation and the name of its target.
struct Replacing {
  const char* name;
  bool (*copy)(InstanceService& service, const std::string& manifest);
  std::string target;
  bool isTold;
};

void PrintTo(const Replacing& replacing, std::ostream* stream) {
  *stream << replacing.name;
}

class ReplacedManifestTest : public InstallManifestsTest,
                             public ::testing::WithParamInterface<Replacing> {
 protected:
  bool copy(InstanceService& service) { return GetParam().copy(service, manifest()); }
  std::string target() const { return "deploy/" + GetParam().target; }
};

TEST_P(ReplacedManifestTest, GivesWayWithoutAMomentWithoutOne) {
  proves("MANIFEST-13");
  _sandbox.write(inHome(target()), "old");
  InstanceService service = quietService();
  _sandbox.files().failAlways(FileOperation::kUnlink, EPERM);

  EXPECT_TRUE(copy(service));

  EXPECT_EQ(_sandbox.read(inHome(target())), kManifest);
  EXPECT_THAT(linesAt(LogLevel::error), IsEmpty());
}

TEST_P(ReplacedManifestTest, ThatStaysIsNoCopy) {
  proves("MANIFEST-8", "MANIFEST-12", "MANIFEST-13");
  _sandbox.write(inHome(target()), "old");
  InstanceService service = quietService();
  _sandbox.files().failAlways(FileOperation::kRename, EPERM);
  // The temporary copy goes, the old manifest does not.
  _sandbox.files().beforeNext(FileOperation::kUnlink, [this] {
    _sandbox.files().beforeNext(FileOperation::kUnlink, [this] {
      _sandbox.files().failNext(FileOperation::kUnlink, EPERM);
    });
  });

  EXPECT_FALSE(copy(service));

  EXPECT_EQ(_sandbox.read(inHome(target())), "old");
  std::vector<std::string> lines;
  if (GetParam().isTold)
    lines = {copyTold(manifest(), GetParam().target, "Operation not permitted")};
  EXPECT_EQ(linesAt(LogLevel::error), lines);
}

TEST_P(ReplacedManifestTest, MayBeAFolder) {
  proves("MANIFEST-7");
  _sandbox.remove(inHome(target()));
  _sandbox.write(inHome(target() + "/deep/file"), "old");
  InstanceService service = quietService();

  EXPECT_TRUE(copy(service));

  EXPECT_EQ(_sandbox.read(inHome(target())), kManifest);
}

TEST_P(ReplacedManifestTest, ThatIsAFolderWhichStaysIsNoCopy) {
  proves("MANIFEST-13");
  _sandbox.remove(inHome(target()));
  _sandbox.write(inHome(target() + "/file"), "old");
  InstanceService service = quietService();
  _sandbox.files().failAlways(FileOperation::kUnlink, EBUSY);

  EXPECT_FALSE(copy(service));

  EXPECT_EQ(_sandbox.read(inHome(target() + "/file")), "old");
}

TEST_P(ReplacedManifestTest, IsGoneWhenTheNewOneCannotBeCopied) {
  proves("MANIFEST-8");
  _sandbox.write(inHome(target()), "old");
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kWrite, ENOSPC);

  EXPECT_FALSE(copy(service));

  EXPECT_FALSE(_sandbox.exists(inHome(target())));
}

INSTANTIATE_TEST_SUITE_P(
    Manifests, ReplacedManifestTest,
    ::testing::Values(Replacing{"Update",
                                [](InstanceService& service, const std::string& manifest) {
                                  return service.copyUpdateManifest(manifest, std::nullopt);
                                },
                                "install.update.xml", true},
                      Replacing{"Install",
                                [](InstanceService& service, const std::string& manifest) {
                                  return service.copyInstallManifest(manifest, std::nullopt);
                                },
                                "install.xml", true},
                      Replacing{"OwnName",
                                [](InstanceService& service, const std::string& manifest) {
                                  return service.copyManifest(manifest);
                                },
                                "m.xml", true},
                      Replacing{"Uninstall",
                                [](InstanceService& service, const std::string& manifest) {
                                  return service.copyHotfixUninstallManifest(manifest);
                                },
                                "uninstall.hotfix.xml", false}),
    [](const auto& given) { return given.param.name; });

TEST_F(InstallManifestsTest, MissingDeployFolderFails) {
  proves("MANIFEST-8");
  _sandbox.remove(inHome("deploy"));

  EXPECT_FALSE(quietService().copyUpdateManifest(manifest(), root()));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy")));
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("6 Copy install manifest to " + homePath("deploy/install.update.xml") + ".",
                  "3 " + copyTold(manifest(), "install.update.xml", "No such file or directory")));
}

TEST_F(InstallManifestsTest, CopyOntoItselfRemovesTheManifestAndFails) {
  proves("MANIFEST-8");
  EXPECT_FALSE(quietService().copyInstallManifest(homePath("deploy/install.xml"), std::nullopt));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/install.xml")));
}

TEST_F(InstallManifestsTest, MalformedManifestStaysAsCopiedAndFails) {
  proves("MANIFEST-9");
  _sandbox.write("pkg/m.xml", "<m><unclosed>");

  EXPECT_FALSE(quietService().copyUpdateManifest(manifest(), root()));

  EXPECT_EQ(deployed("install.update.xml"), "<m><unclosed>");
}

TEST_F(InstallManifestsTest, ManifestWithoutTheExpectedElementsSucceeds) {
  proves("MANIFEST-9");
  _sandbox.write("pkg/m.xml", "<m><other/></m>");

  EXPECT_TRUE(quietService().copyUpdateManifest(manifest(), root()));

  EXPECT_THAT(linesAt(LogLevel::error), ElementsAre("Not able to get domain-object element"));
  EXPECT_THAT(deployed("install.update.xml"), HasSubstr("\n  <other/>"));
}

TEST_F(InstallManifestsTest, LinkInThePlaceOfAManifestIsReplacedAndNotWrittenThrough) {
  proves("MANIFEST-7");
  _sandbox.write("victim", "untouched");
  _sandbox.makeLink(inHome("deploy/install.update.xml"), _sandbox.path("victim"));
  _sandbox.makeLink(inHome("deploy/install.dangling.xml"), _sandbox.path("nothing"));

  EXPECT_TRUE(quietService().copyUpdateManifest(manifest(), root()));
  EXPECT_TRUE(quietService().copyInstallManifest(manifest(), "install.dangling.xml", root()));

  EXPECT_EQ(_sandbox.read("victim"), "untouched");
  EXPECT_FALSE(_sandbox.exists("nothing"));
  EXPECT_THAT(deployed("install.dangling.xml"), HasSubstr("url"));
}

TEST_F(InstallManifestsTest, WithoutHomeOnlyTheGeneralCopyFallsBack) {
  proves("MANIFEST-11");
  InstanceService service(std::nullopt);
  _sandbox.clearLog();

  EXPECT_FALSE(service.copyUpdateManifest(manifest(), std::nullopt));
  EXPECT_FALSE(service.copyInstallManifest(manifest(), std::nullopt));
  EXPECT_FALSE(service.copyManifest(manifest()));
  EXPECT_FALSE(service.copyHotfixUninstallManifest(manifest()));
  service.updateProvisionManifestVersion("1");
  service.updateInstallID("1");
  service.updateInstallIDWithProvManVer();
  service.backupInstallManifest();

  EXPECT_EQ(service.pathToRcphome(), std::nullopt);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallManifestsTest, GeneralCopyWithoutHomeTakesTheFixedOneFromThenOn) {
  proves("MANIFEST-11");
  InstanceService service(std::nullopt);
  _sandbox.clearLog();

  EXPECT_TRUE(service.copyInstallManifest(manifest(), "install.x.xml", std::nullopt));

  EXPECT_EQ(deployed("install.x.xml"), kManifest);
  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 The _pathToRcphome is nil, manually setting rcpHome!",
                          "3 The productName is nil!",
                          "6 Copy install manifest to " + homePath("deploy/install.x.xml") + "."));
}

TEST_F(InstallManifestsTest, ProductNameIsToldButDoesNotEnterThePath) {
  proves("MANIFEST-11");
  _sandbox.writePlist(_sandbox.paths().internalConfiguration, {{"productName", "Other"}});
  InstanceService service(std::nullopt);
  _sandbox.clearLog();

  EXPECT_TRUE(service.copyInstallManifest(manifest(), "install.x.xml", std::nullopt));

  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_THAT(numberedLines(), ElementsAre("3 The _pathToRcphome is nil, manually setting rcpHome!",
                                           "6 The product name is: Other.", ::testing::_));
}

TEST_F(InstallManifestsTest, OwnNameCopyKeepsNameAndPlaceholder) {
  proves("MANIFEST-10");
  EXPECT_TRUE(quietService().copyManifest(manifest()));

  EXPECT_EQ(deployed("m.xml"), kManifest);
}

TEST_F(InstallManifestsTest, OwnNameCopyReplacesWhatStandsThere) {
  proves("MANIFEST-10");
  _sandbox.write(inHome("deploy/m.xml"), "old");

  EXPECT_TRUE(quietService().copyManifest(manifest()));

  EXPECT_EQ(deployed("m.xml"), kManifest);
  EXPECT_THAT(numberedLines(),
              ElementsAre("6 Copy install manifest to " + homePath("deploy/m.xml") + "."));
}

TEST_F(InstallManifestsTest, OwnNameCopyNeedsManifestAndHome) {
  proves("MANIFEST-10");
  InstanceService service = quietService();

  EXPECT_FALSE(service.copyManifest(std::nullopt));
  EXPECT_FALSE(service.copyManifest(_sandbox.path("missing.xml")));
  _sandbox.remove(kHome);
  EXPECT_FALSE(service.copyManifest(manifest()));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallManifestsTest, UninstallManifestIsReplacedSilentlyAndUnresolved) {
  proves("MANIFEST-12");
  _sandbox.write(inHome("deploy/uninstall.hotfix.xml"), "old");

  EXPECT_TRUE(quietService().copyHotfixUninstallManifest(manifest()));

  EXPECT_EQ(deployed("uninstall.hotfix.xml"), kManifest);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallManifestsTest, LinkInTheUninstallManifestsPlaceIsReplacedAndNotWrittenThrough) {
  proves("MANIFEST-7");
  _sandbox.makeLink(inHome("deploy/uninstall.hotfix.xml"), _sandbox.path("nothing"));

  EXPECT_TRUE(quietService().copyHotfixUninstallManifest(manifest()));

  EXPECT_EQ(deployed("uninstall.hotfix.xml"), kManifest);
  EXPECT_FALSE(_sandbox.exists("nothing"));
}

TEST_F(InstallManifestsTest, UninstallManifestNeedsManifestAndHome) {
  proves("MANIFEST-12");
  InstanceService service = quietService();
  _sandbox.write(inHome("deploy/uninstall.hotfix.xml"), "old");

  EXPECT_FALSE(service.copyHotfixUninstallManifest(std::nullopt));
  EXPECT_FALSE(service.copyHotfixUninstallManifest(_sandbox.path("missing.xml")));
  EXPECT_EQ(deployed("uninstall.hotfix.xml"), "old");
  _sandbox.remove(kHome);
  EXPECT_FALSE(service.copyHotfixUninstallManifest(manifest()));
}

TEST_F(InstallManifestsTest, UninstallManifestCopyFailsWithoutDeployFolder) {
  proves("MANIFEST-12");
  _sandbox.remove(inHome("deploy"));

  EXPECT_FALSE(quietService().copyHotfixUninstallManifest(manifest()));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

}  // namespace
}  // namespace installer::test
