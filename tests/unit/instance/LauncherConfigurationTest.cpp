#include <gmock/gmock.h>

#include <unistd.h>
#include <filesystem>

#include <cerrno>

#include "hotfix/instance/InstanceService.h"
#include "platform/Clock.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"
#include "support/TreeSnapshot.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kProperties = "rcplauncher.properties";

// A minute later at every look.
class RunningClock : public FakeClock {
 public:
  std::tm localTime() override {
    std::tm now{};
    now.tm_mday = 5;
    now.tm_mon = 2;
    now.tm_year = 113;
    now.tm_hour = 9;
    now.tm_min = _minute++;
    return now;
  }

 private:
  int _minute = 7;
};

class LauncherConfigurationTest : public InstanceFixture {
 protected:
  LauncherConfigurationTest() {
    _sandbox.clock().set(2013, 3, 5, 9, 7);
    _sandbox.write("template", "# comment\nkept=1\nrcp.data=from template\n");
  }

  std::string templateFile() const { return _sandbox.path("template"); }
  std::string properties() const { return _sandbox.read(inHome(kProperties)); }
  InstanceService quietService() {
    InstanceService service(home());
    _sandbox.clearLog();
    return service;
  }
  InstanceService serviceWithoutHome() {
    InstanceService service(std::nullopt);
    _sandbox.clearLog();
    return service;
  }
  InstanceService freshService() {
    _sandbox.remove(inHome(kProperties));
    return quietService();
  }
  // The home is gone; our next try to make it fails, but finds it made all the same.
  void refuseHomeThatSomebodyElseMakes() {
    _sandbox.remove(kHome);
    _sandbox.files().failNext(FileOperation::kMakeDirectory, EIO);
    _sandbox.files().beforeNext(FileOperation::kMakeDirectory, [&] { _sandbox.makeFolder(kHome); });
  }
};

TEST_F(LauncherConfigurationTest, LinksPointToHomeAndSharedFolder) {
  proves("SETUP-1");
  EXPECT_TRUE(quietService().generateLinks());

  const std::string parent = _sandbox.path("Applications/Quillmere.app/Contents/MacOS");
  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/rcp.link")), "path=" + home() + "\n");
  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/shared.link")), "path=" + parent + "/shared\n");
  EXPECT_EQ(_sandbox.mode(inHome("eclipse/links")), 0775U);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, LinkPathsAreEscapedAsValues) {
  proves("SETUP-1");
  const std::string parent = "Applications/Gr\xC3\xBCn #1!=a:b\\c.app";
  _sandbox.makeFolder(parent + "/rcp/eclipse");

  EXPECT_TRUE(InstanceService(_sandbox.path(parent + "/rcp")).generateLinks());

  const std::string escaped =
      "path=" + _sandbox.path("Applications/Gr\\u00fcn \\#1\\!\\=a\\:b\\\\c.app");
  EXPECT_EQ(_sandbox.read(parent + "/rcp/eclipse/links/rcp.link"), escaped + "/rcp\n");
  EXPECT_EQ(_sandbox.read(parent + "/rcp/eclipse/links/shared.link"), escaped + "/shared\n");
}

TEST_F(LauncherConfigurationTest, LinkHoldsTheHomeAsItWasGiven) {
  proves("SETUP-1");
  EXPECT_TRUE(InstanceService(home() + "/").generateLinks());

  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/rcp.link")), "path=" + home() + "/\n");
  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/shared.link")),
            "path=" + _sandbox.path(std::string(kBundle) + "/Contents/MacOS/shared") + "\n");
}

TEST_F(LauncherConfigurationTest, ExistingLinksKeepOtherKeysAndTheFolderItsMode) {
  proves("SETUP-1");
  _sandbox.makeFolder(inHome("eclipse/links"), 0700);
  _sandbox.write(inHome("eclipse/links/rcp.link"), "other=1\npath=old\n");

  EXPECT_TRUE(quietService().generateLinks());

  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/rcp.link")), "other=1\npath=" + home() + "\n");
  EXPECT_EQ(_sandbox.mode(inHome("eclipse/links")), 0700U);
}

TEST_F(LauncherConfigurationTest, LinksNeedHomeAndEclipseFolder) {
  proves("SETUP-2");
  EXPECT_FALSE(InstanceService(std::nullopt).generateLinks());

  _sandbox.remove(inHome("eclipse"));
  EXPECT_FALSE(quietService().generateLinks());
  EXPECT_FALSE(_sandbox.exists(inHome("eclipse")));

  _sandbox.write(inHome("eclipse"), "");
  EXPECT_FALSE(quietService().generateLinks());
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, LinksFolderThatCannotBeMadeIsAWarning) {
  proves("SETUP-3");
  InstanceService service = quietService();
  _sandbox.users().variables["USER"] = "nobody-knows";

  EXPECT_FALSE(service.generateLinks());

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::warning, "Not able to create links directory.")));
  EXPECT_FALSE(_sandbox.exists(inHome("eclipse/links")));
}

TEST_F(LauncherConfigurationTest, LinksFolderFallsToRootWithoutAnyUserName) {
  InstanceService service = quietService();
  const User self = _sandbox.users().userList[0];
  _sandbox.users().variables.erase("USER");
  _sandbox.users().effectiveUser = 12345;
  _sandbox.users().userList = {{"root", self.uid, self.gid, self.home}};

  EXPECT_TRUE(service.generateLinks());
}

TEST_F(LauncherConfigurationTest, LinksFolderIsMadeWithoutUserVariable) {
  InstanceService service = quietService();
  _sandbox.users().variables.erase("USER");

  EXPECT_TRUE(service.generateLinks());

  EXPECT_EQ(_sandbox.mode(inHome("eclipse/links")), 0775U);
}

// Files are given away for real: to the user at the screen, or to the one whom the process is of.
class GivenFilesTest : public LauncherConfigurationTest {
 protected:
  static constexpr uid_t kScreen = 4711;
  static constexpr uid_t kLogin = 4811;
  static constexpr gid_t kAdmin = 4713;

  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    FakeUserContext& users = _sandbox.users();
    users.userList = {{"screen", kScreen, 4712, "/"}, {"login", kLogin, 4812, "/"}};
    users.groups = {{"admin", kAdmin}};
    users.variables["USER"] = "screen";
    users.effectiveUser = kLogin;
  }

  void expectGivenTo(uid_t user, const std::string& file) const {
    const TreeEntry entry = snapshotOf(_sandbox.path(inHome(file))).at(".");
    EXPECT_EQ(entry.owner, user) << file;
    EXPECT_EQ(entry.group, kAdmin) << file;
    EXPECT_EQ(entry.mode, 0775U) << file;
  }
};

TEST_F(GivenFilesTest, LinksFolderIsTheConsoleUsers) {
  proves("SETUP-3");
  EXPECT_TRUE(quietService().generateLinks());

  expectGivenTo(kScreen, "eclipse/links");
}

TEST_F(GivenFilesTest, LinksFolderIsTheCurrentUsersWithoutUserVariable) {
  proves("SETUP-3");
  _sandbox.users().variables.erase("USER");

  EXPECT_TRUE(quietService().generateLinks());

  expectGivenTo(kLogin, "eclipse/links");
}

TEST_F(GivenFilesTest, LinksFolderIsRootsWithoutAnyUserName) {
  proves("SETUP-3");
  _sandbox.users().variables.erase("USER");
  _sandbox.users().effectiveUser = 12345;
  _sandbox.users().userList = {{"root", kScreen, 4712, "/"}};

  EXPECT_TRUE(quietService().generateLinks());

  expectGivenTo(kScreen, "eclipse/links");
}

TEST_F(GivenFilesTest, DeployFolderAndVirtualMachinePropertiesAreTheCurrentUsers) {
  proves("SETUP-17");
  _sandbox.remove(inHome("deploy"));

  EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(std::nullopt));

  expectGivenTo(kLogin, "deploy");
  expectGivenTo(kLogin, "deploy/jvm.properties");
}

TEST_F(GivenFilesTest, VirtualMachinePropertiesOfATemplateAreTheProcesss) {
  EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(templateFile()));

  const TreeEntry copied = snapshotOf(_sandbox.path(inHome("deploy/jvm.properties"))).at(".");
  EXPECT_EQ(copied.owner, geteuid());
  EXPECT_EQ(copied.mode, 0644U);
}

TEST_F(LauncherConfigurationTest, FileInThePlaceOfTheLinksFolderStaysAndIsNotTold) {
  proves("SETUP-4");
  _sandbox.write(inHome("eclipse/links"), "a file");

  EXPECT_TRUE(quietService().generateLinks());

  EXPECT_EQ(_sandbox.read(inHome("eclipse/links")), "a file");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, OneFailedLinkDoesNotKeepTheOtherAway) {
  proves("SETUP-4");
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kRename, ENOSPC);

  EXPECT_TRUE(service.generateLinks());

  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_FALSE(_sandbox.exists(inHome("eclipse/links/rcp.link")));
  EXPECT_TRUE(_sandbox.exists(inHome("eclipse/links/shared.link")));
}

TEST_F(LauncherConfigurationTest, FailedLinkSavesAreNotLookedAt) {
  proves("SETUP-4");
  _sandbox.makeFolder(inHome("eclipse/links"));
  InstanceService service = quietService();
  _sandbox.files().failAlways(FileOperation::kRename, ENOSPC);

  EXPECT_TRUE(service.generateLinks());
}

TEST_F(LauncherConfigurationTest, LauncherPropertiesAreMadeFromTheTemplate) {
  proves("SETUP-5");
  _sandbox.makeFolder(inHome("eclipse/plugins/com.kiv.rcp.base_6.2.3"));

  EXPECT_TRUE(freshService().generateRcplauncherPropertiesWithTemplate(templateFile(), "/ws"));

  EXPECT_EQ(properties(),
            "kept=1\nrcp.data=/ws\nrcp.install.id=0503130907\n"
            "provisioning.manifest.version=0503130907\n"
            "provisioning.manifest=file\\:/${rcp.home}/rcp/deploy/install.xml\n"
            "rcp.base.location=${rcp.home}/rcp/eclipse/plugins/com.kiv.rcp.base_6.2.3\n");
  EXPECT_THAT(numberedLines(),
              ElementsAre("6 Update rcplauncher.properties. ", "6 Save rcplauncher.properties."));
}

TEST_F(LauncherConfigurationTest, WithoutWorkspaceAndBaseTheTemplatesValuesStay) {
  proves("SETUP-6");
  _sandbox.write("template", "rcp.data=from template\nrcp.base.location=old\n");

  EXPECT_TRUE(
      freshService().generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_THAT(properties(), HasSubstr("rcp.data=from template\nrcp.base.location=old\n"));
}

TEST_F(LauncherConfigurationTest, LinkedTemplatesAreTheFilesBehindTheLinks) {
  proves("FILES-22");
  const std::string link = _sandbox.makeLink("link", "template");
  InstanceService service = freshService();

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(link, std::nullopt));
  EXPECT_TRUE(service.copyOgsiAgentProperties(link));
  EXPECT_TRUE(service.generateJVMPropertiesWithTemplate(link));

  EXPECT_THAT(properties(), HasSubstr("kept=1\nrcp.data=from template\n"));
  for (const char* file : {"osgiagent.properties", "deploy/jvm.properties"}) {
    EXPECT_EQ(_sandbox.read(inHome(file)), _sandbox.read("template")) << file;
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(homePath(file))))
        << file;
  }
}

TEST_F(LauncherConfigurationTest, LinkedTemplatesFromElsewhereAreNotCopied) {
  proves("FILES-22");
  _sandbox.write("secret", "password=1\n");
  _sandbox.makeFolder("templates");
  const std::string link = _sandbox.makeLink("templates/link", "../secret");
  InstanceService service = freshService();

  EXPECT_FALSE(service.generateRcplauncherPropertiesWithTemplate(link, std::nullopt));
  EXPECT_EQ(linesAt(LogLevel::error).size(), 2U);
  EXPECT_FALSE(service.copyOgsiAgentProperties(link));
  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(link));

  for (const char* file : {kProperties, "osgiagent.properties", "deploy/jvm.properties"})
    EXPECT_FALSE(_sandbox.exists(inHome(file))) << file;
}

TEST_F(LauncherConfigurationTest, LinkedTemplateFromElsewhereLeavesOldOptionsWhereTheyAre) {
  _sandbox.write("secret", "-Xmx1m");
  _sandbox.makeFolder("templates");
  const std::string link = _sandbox.makeLink("templates/link", "../secret");
  _sandbox.write(inHome("deploy/jvm.properties"), "old");

  EXPECT_FALSE(freshService().generateJVMPropertiesWithTemplate(link));

  EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties")), "old");
}

TEST_F(LauncherConfigurationTest, MissingTemplateIsAnError) {
  proves("SETUP-7");
  EXPECT_FALSE(freshService().generateRcplauncherPropertiesWithTemplate(_sandbox.path("none"),
                                                                        std::nullopt));

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Fail to locate the template for rcplauncher.properties."));
  EXPECT_FALSE(_sandbox.exists(inHome(kProperties)));
}

TEST_F(LauncherConfigurationTest, MissingTemplateMakesNoHome) {
  proves("SETUP-7");
  InstanceService service = quietService();
  _sandbox.remove(kHome);

  EXPECT_FALSE(
      service.generateRcplauncherPropertiesWithTemplate(_sandbox.path("none"), std::nullopt));

  EXPECT_FALSE(_sandbox.exists(kHome));
}

TEST_F(LauncherConfigurationTest, OneStampServesBothIdsAndTheNextUpdateHasAnother) {
  proves("SETUP-5");
  RunningClock clock;
  InstanceService service = freshService();
  _sandbox.platform().clock = &clock;

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));
  EXPECT_THAT(properties(), HasSubstr("rcp.install.id=0503130907\n"
                                      "provisioning.manifest.version=0503130907\n"));

  EXPECT_TRUE(service.updateRcpLauncherProperties());
  EXPECT_THAT(properties(), HasSubstr("rcp.install.id=0503130908\n"
                                      "provisioning.manifest.version=0503130908\n"));
}

TEST_F(LauncherConfigurationTest, ExistingLauncherPropertiesMakeBothCopiesFail) {
  proves("SETUP-8");
  const std::string before = properties();

  EXPECT_FALSE(quietService().generateRcplauncherPropertiesWithTemplate(templateFile(), "/ws"));

  const std::string target = homePath(kProperties);
  EXPECT_EQ(properties(), before);
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Fail to copy rcplauncher.properties to " + target + ", try again...",
                          "3 Fail to copy rcplauncher.properties to " + target + " again!"));
}

TEST_F(LauncherConfigurationTest, SecondCopyCanSucceed) {
  proves("SETUP-8");
  InstanceService service = freshService();
  _sandbox.files().failNext(FileOperation::kRename, EIO);

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Fail to copy rcplauncher.properties to " + homePath(kProperties) +
                              ", try again...",
                          "6 Update rcplauncher.properties. ", "6 Save rcplauncher.properties."));
}

TEST_F(LauncherConfigurationTest, HomeThatCannotBeMadeEndsItThoughTheSecondCopySucceeds) {
  proves("SETUP-9");
  InstanceService service = freshService();
  refuseHomeThatSomebodyElseMakes();
  _sandbox.files().failAt(2, EIO);  // the first copy

  EXPECT_FALSE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  const std::string target = homePath(kProperties);
  EXPECT_EQ(properties(), _sandbox.read("template"));
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Failed to create directory " + home(),
                          "3 Fail to copy rcplauncher.properties to " + target + ", try again...",
                          "3 Fail to copy rcplauncher.properties to " + target + " again!"));
}

TEST_F(LauncherConfigurationTest, HomeThatCannotBeMadeDoesNotMatterWhenTheFirstCopySucceeds) {
  proves("SETUP-9");
  InstanceService service = freshService();
  refuseHomeThatSomebodyElseMakes();

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Failed to create directory " + home(),
                          "6 Update rcplauncher.properties. ", "6 Save rcplauncher.properties."));
}

TEST_F(LauncherConfigurationTest, HomeThatIsAFileIsToldWithBothFailedCopies) {
  proves("SETUP-9");
  InstanceService service = freshService();
  _sandbox.remove(kHome);
  _sandbox.write(kHome, "a file now");

  EXPECT_FALSE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  const std::string target = homePath(kProperties);
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Failed to create directory " + home(),
                          "3 Fail to copy rcplauncher.properties to " + target + ", try again...",
                          "3 Fail to copy rcplauncher.properties to " + target + " again!"));
}

TEST_F(LauncherConfigurationTest, HomeRemovedMeanwhileIsMadeAgain) {
  proves("SETUP-9");
  InstanceService service = freshService();
  _sandbox.remove(kHome);

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_TRUE(_sandbox.exists(inHome(kProperties)));
}

TEST_F(LauncherConfigurationTest, WithoutHomeTheFixedOneIsTaken) {
  proves("SETUP-10");
  _sandbox.remove(inHome(kProperties));
  InstanceService service = serviceWithoutHome();

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("3 The rcpHome is nil, manually setting rcpHome", "3 The productName is nil!",
                  "6 Update rcplauncher.properties. ", "6 Save rcplauncher.properties."));
  EXPECT_TRUE(service.updateRcpLauncherProperties());
}

TEST_F(LauncherConfigurationTest, ProductNameIsToldButDoesNotEnterTheHome) {
  proves("SETUP-10");
  _sandbox.remove(inHome(kProperties));
  _sandbox.writePlist(_sandbox.paths().internalConfiguration, {{"productName", "Other"}});
  InstanceService service = serviceWithoutHome();

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("3 The rcpHome is nil, manually setting rcpHome", "6 The product name is: Other.",
                  "6 Update rcplauncher.properties. ", "6 Save rcplauncher.properties."));
}

TEST_F(LauncherConfigurationTest, FixedHomeIsTakenThoughTheTemplateIsMissing) {
  proves("SETUP-10");
  InstanceService service = serviceWithoutHome();

  EXPECT_FALSE(
      service.generateRcplauncherPropertiesWithTemplate(_sandbox.path("none"), std::nullopt));

  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("3 The rcpHome is nil, manually setting rcpHome", "3 The productName is nil!",
                  "3 Fail to locate the template for rcplauncher.properties."));
}

TEST_F(LauncherConfigurationTest, FailedSaveOfLauncherPropertiesStillSucceeds) {
  proves("SETUP-11");
  bool saveFailed = false;
  for (std::size_t operation = 1; operation <= 14; ++operation) {
    InstanceService service = freshService();
    _sandbox.files().failAt(operation, ENOSPC);

    const bool made =
        service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt);

    const bool reachedSave =
        !_sandbox.log().empty() && _sandbox.log().back().text == "Save rcplauncher.properties.";
    EXPECT_EQ(made, reachedSave) << operation;
    saveFailed |= made && properties().find("rcp.install.id") == std::string::npos;
  }
  EXPECT_TRUE(saveFailed);
}

TEST_F(LauncherConfigurationTest, UpdateGivesNewIdsAndBaseLocation) {
  proves("SETUP-12");
  _sandbox.makeFolder(inHome("eclipse/plugins/com.kiv.rcp.base_7"));
  _sandbox.write(inHome(kProperties), "a=1\nrcp.install.id=x\n");

  EXPECT_TRUE(quietService().updateRcpLauncherProperties());

  EXPECT_EQ(properties(),
            "a=1\nrcp.install.id=0503130907\nprovisioning.manifest.version=0503130907\n"
            "rcp.base.location=${rcp.home}/rcp/eclipse/plugins/com.kiv.rcp.base_7\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, UpdateWithoutBaseKeepsTheLocation) {
  proves("SETUP-12");
  _sandbox.write(inHome(kProperties), "rcp.base.location=old\n");

  EXPECT_TRUE(quietService().updateRcpLauncherProperties());

  EXPECT_THAT(properties(), HasSubstr("rcp.base.location=old\n"));
}

TEST_F(LauncherConfigurationTest, UpdateNeedsHomeAndFileAndASaveThatSucceeds) {
  proves("SETUP-11");
  EXPECT_FALSE(InstanceService(std::nullopt).updateRcpLauncherProperties());
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kRename, ENOSPC);
  EXPECT_FALSE(service.updateRcpLauncherProperties());
  EXPECT_THAT(_sandbox.log(), IsEmpty());

  _sandbox.remove(inHome(kProperties));
  EXPECT_FALSE(service.updateRcpLauncherProperties());
  EXPECT_FALSE(_sandbox.exists(inHome(kProperties)));
  _sandbox.remove(kHome);
  EXPECT_FALSE(service.updateRcpLauncherProperties());
}

TEST_F(LauncherConfigurationTest, AgentPropertiesAreCopiedByteForByte) {
  proves("SETUP-13");
  EXPECT_TRUE(quietService().copyOgsiAgentProperties(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("osgiagent.properties")), _sandbox.read("template"));
}

TEST_F(LauncherConfigurationTest, ExistingAgentPropertiesStayAndFail) {
  proves("SETUP-13");
  _sandbox.write(inHome("osgiagent.properties"), "mine");

  EXPECT_FALSE(quietService().copyOgsiAgentProperties(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("osgiagent.properties")), "mine");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, MissingAgentTemplateIsAnErrorOnlyWithAHome) {
  proves("SETUP-14");
  EXPECT_FALSE(quietService().copyOgsiAgentProperties(_sandbox.path("none")));
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Not able to find template for osgiagent.properties."));

  InstanceService unusable(std::nullopt);
  _sandbox.clearLog();
  EXPECT_FALSE(unusable.copyOgsiAgentProperties(_sandbox.path("none")));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, AgentPropertiesNeedAHomeFolder) {
  proves("SETUP-14");
  InstanceService service = quietService();
  _sandbox.remove(kHome);

  EXPECT_FALSE(service.copyOgsiAgentProperties(templateFile()));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, VirtualMachinePropertiesAreReplacedByTheTemplate) {
  proves("SETUP-15");
  _sandbox.write(inHome("deploy/jvm.properties"), "old");

  EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties")), _sandbox.read("template"));
}

TEST_F(LauncherConfigurationTest, VirtualMachinePropertiesThatStayCountAsCopied) {
  proves("SETUP-16");
  _sandbox.write(inHome("deploy/jvm.properties"), "old");
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kUnlink, EPERM);

  EXPECT_TRUE(service.generateJVMPropertiesWithTemplate(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties")), "old");
}

TEST_F(LauncherConfigurationTest, VirtualMachinePropertiesThatCannotBeCopiedAreGone) {
  proves("SETUP-16");
  _sandbox.write(inHome("deploy/jvm.properties"), "old");
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kCreateTemporary, ENOSPC);

  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(templateFile()));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/jvm.properties")));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest,
       TemplateThatCannotBeLookedAtDoesNotEmptyVirtualMachineProperties) {
  proves("SETUP-18");
  _sandbox.write(inHome("deploy/jvm.properties"), "old");
  InstanceService service = quietService();
  _sandbox.files().failReading(templateFile(), EIO);

  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties")), "old");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, FilesThatCannotBeReadAreKeptSilently) {
  proves("SETUP-18");
  const std::string link = _sandbox.write(inHome("eclipse/links/rcp.link"), "theirs=1\n");
  _sandbox.write(inHome(kProperties), "theirs=1\n");
  InstanceService service = quietService();
  _sandbox.files().failReading(link, EIO);
  _sandbox.files().failReading(homePath(kProperties), EIO);

  EXPECT_TRUE(service.generateLinks());
  EXPECT_FALSE(service.updateRcpLauncherProperties());

  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/rcp.link")), "theirs=1\n");
  EXPECT_EQ(properties(), "theirs=1\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, VirtualMachinePropertiesThatCannotBeEmptiedStay) {
  proves("SETUP-16");
  _sandbox.write(inHome("deploy/jvm.properties/x"), "a folder's");

  EXPECT_FALSE(quietService().generateJVMPropertiesWithTemplate(std::nullopt));

  EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties/x")), "a folder's");
}

TEST_F(LauncherConfigurationTest, WithoutTemplateVirtualMachinePropertiesAreEmptied) {
  proves("SETUP-15");
  for (const std::optional<std::string>& path :
       {std::optional<std::string>(), std::optional<std::string>(_sandbox.path("none"))}) {
    _sandbox.write(inHome("deploy/jvm.properties"), "old", 0600);

    EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(path));

    EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties")), "");
    EXPECT_EQ(_sandbox.mode(inHome("deploy/jvm.properties")), 0775U);
  }
}

TEST_F(LauncherConfigurationTest, MissingDeployFolderIsMadeWhateverUserSays) {
  _sandbox.remove(inHome("deploy"));
  _sandbox.users().variables["USER"] = "nobody-knows";

  EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(std::nullopt));

  EXPECT_EQ(_sandbox.mode(inHome("deploy")), 0775U);
}

TEST_F(LauncherConfigurationTest, DeployFolderIsNotMadeForRootInPlaceOfAnUnknownUser) {
  proves("SETUP-17");
  _sandbox.remove(inHome("deploy"));
  InstanceService service = quietService();
  _sandbox.users().userList[0].name = "root";
  _sandbox.users().effectiveUser = 12345;

  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(std::nullopt));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy")));
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Not able to create the " + homePath("deploy") + " directory."));
}

TEST_F(LauncherConfigurationTest, DeployFolderThatCannotBeMadeIsAnError) {
  proves("SETUP-17");
  _sandbox.remove(inHome("deploy"));
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kMakeDirectory, ENOSPC);

  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(templateFile()));

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Not able to create the " + homePath("deploy") + " directory."));
}

TEST_F(LauncherConfigurationTest, VirtualMachinePropertiesNeedAHomeFolder) {
  proves("SETUP-15");
  EXPECT_FALSE(InstanceService(std::nullopt).generateJVMPropertiesWithTemplate(std::nullopt));
  InstanceService service = quietService();
  _sandbox.remove(kHome);
  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(std::nullopt));
  EXPECT_FALSE(_sandbox.exists(kHome));
  _sandbox.write(kHome, "a file now");
  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(std::nullopt));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, WorkspaceGivenAtCreationWins) {
  proves("INSTANCE-12");
  _sandbox.write(inHome(kProperties), "rcp.data=/other\n");

  EXPECT_EQ(InstanceService(home(), "~/${env.HOME}/").getWorkspace(), "~/${env.HOME}/");
}

TEST_F(LauncherConfigurationTest, WorkspaceComesFromTheLauncherPropertiesWithHomeReplaced) {
  proves("INSTANCE-12");
  _sandbox.users().variables["HOME"] = "/Users/a";
  _sandbox.write(inHome(kProperties), "rcp.data=${env.HOME}/Library/ws,${env.HOME},${rcp.home}\n");

  EXPECT_EQ(InstanceService(home()).getWorkspace(), "/Users/a/Library/ws,/Users/a,${rcp.home}");
}

TEST_F(LauncherConfigurationTest, WorkspaceKeepsThePlaceholderWithoutHomeVariable) {
  proves("INSTANCE-12");
  _sandbox.users().variables.erase("HOME");
  _sandbox.write(inHome(kProperties), "rcp.data=${env.HOME}/ws\n");

  EXPECT_EQ(InstanceService(home()).getWorkspace(), "${env.HOME}/ws");
}

TEST_F(LauncherConfigurationTest, EmptyHomeVariableReplacesThePlaceholderToo) {
  proves("INSTANCE-12");
  _sandbox.users().variables["HOME"] = "";
  _sandbox.write(inHome(kProperties), "rcp.data=${env.HOME}/ws\n");

  EXPECT_EQ(InstanceService(home()).getWorkspace(), "/ws");
}

TEST_F(LauncherConfigurationTest, WorkspaceIsUnknownWithoutFileOrKey) {
  proves("INSTANCE-12");
  EXPECT_EQ(InstanceService(home()).getWorkspace(), std::nullopt);
  _sandbox.remove(inHome(kProperties));
  EXPECT_EQ(InstanceService(home()).getWorkspace(), std::nullopt);
  EXPECT_EQ(InstanceService(std::nullopt).getWorkspace(), std::nullopt);
}

}  // namespace
}  // namespace installer::test
