#include <gmock/gmock.h>

#include <cerrno>

#include "instance/InstanceService.h"
#include "support/InstanceFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kProperties = "rcplauncher.properties";

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
  InstanceService freshService() {
    _sandbox.remove(inHome(kProperties));
    return quietService();
  }
};

TEST_F(LauncherConfigurationTest, LinksPointToHomeAndSharedFolder) {
  EXPECT_TRUE(quietService().generateLinks());

  const std::string parent = _sandbox.path("Applications/Quillmere.app/Contents/MacOS");
  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/rcp.link")), "path=" + home() + "\n");
  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/shared.link")), "path=" + parent + "/shared\n");
  EXPECT_EQ(_sandbox.mode(inHome("eclipse/links")), 0775U);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, ExistingLinksKeepOtherKeysAndTheFolderItsMode) {
  _sandbox.makeFolder(inHome("eclipse/links"), 0700);
  _sandbox.write(inHome("eclipse/links/rcp.link"), "other=1\npath=old\n");

  EXPECT_TRUE(quietService().generateLinks());

  EXPECT_EQ(_sandbox.read(inHome("eclipse/links/rcp.link")), "other=1\npath=" + home() + "\n");
  EXPECT_EQ(_sandbox.mode(inHome("eclipse/links")), 0700U);
}

TEST_F(LauncherConfigurationTest, LinksNeedHomeAndEclipseFolder) {
  EXPECT_FALSE(InstanceService(std::nullopt).generateLinks());

  _sandbox.remove(inHome("eclipse"));
  EXPECT_FALSE(quietService().generateLinks());
  EXPECT_FALSE(_sandbox.exists(inHome("eclipse")));

  _sandbox.write(inHome("eclipse"), "");
  EXPECT_FALSE(quietService().generateLinks());
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, LinksFolderThatCannotBeMadeIsAWarning) {
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

TEST_F(LauncherConfigurationTest, FailedLinkSavesAreNotLookedAt) {
  _sandbox.makeFolder(inHome("eclipse/links"));
  InstanceService service = quietService();
  _sandbox.files().failAlways(FileOperation::kRename, ENOSPC);

  EXPECT_TRUE(service.generateLinks());
}

TEST_F(LauncherConfigurationTest, LauncherPropertiesAreMadeFromTheTemplate) {
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
  _sandbox.write("template", "rcp.data=from template\nrcp.base.location=old\n");

  EXPECT_TRUE(
      freshService().generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_THAT(properties(), HasSubstr("rcp.data=from template\nrcp.base.location=old\n"));
}

TEST_F(LauncherConfigurationTest, MissingTemplateIsAnError) {
  EXPECT_FALSE(freshService().generateRcplauncherPropertiesWithTemplate(_sandbox.path("none"),
                                                                        std::nullopt));

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Fail to locate the template for rcplauncher.properties."));
  EXPECT_FALSE(_sandbox.exists(inHome(kProperties)));
}

TEST_F(LauncherConfigurationTest, ExistingLauncherPropertiesMakeBothCopiesFail) {
  const std::string before = properties();

  EXPECT_FALSE(quietService().generateRcplauncherPropertiesWithTemplate(templateFile(), "/ws"));

  const std::string target = homePath(kProperties);
  EXPECT_EQ(properties(), before);
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Fail to copy rcplauncher.properties to " + target + ", try again...",
                          "3 Fail to copy rcplauncher.properties to " + target + " again!"));
}

TEST_F(LauncherConfigurationTest, SecondCopyCanSucceed) {
  InstanceService service = freshService();
  _sandbox.files().failNext(FileOperation::kRename, EIO);

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Fail to copy rcplauncher.properties to " + homePath(kProperties) +
                              ", try again...",
                          "6 Update rcplauncher.properties. ", "6 Save rcplauncher.properties."));
}

TEST_F(LauncherConfigurationTest, HomeThatCannotBeMadeEndsItEvenIfACopyWouldNot) {
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
  InstanceService service = freshService();
  _sandbox.remove(kHome);

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_TRUE(_sandbox.exists(inHome(kProperties)));
}

TEST_F(LauncherConfigurationTest, WithoutHomeTheFixedOneIsTaken) {
  _sandbox.remove(inHome(kProperties));
  InstanceService service(std::nullopt);
  _sandbox.clearLog();

  EXPECT_TRUE(service.generateRcplauncherPropertiesWithTemplate(templateFile(), std::nullopt));

  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("3 The rcpHome is nil, manually setting rcpHome", "3 The productName is nil!",
                  "6 Update rcplauncher.properties. ", "6 Save rcplauncher.properties."));
}

TEST_F(LauncherConfigurationTest, FailedSaveOfLauncherPropertiesStillSucceeds) {
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
  _sandbox.makeFolder(inHome("eclipse/plugins/com.kiv.rcp.base_7"));
  _sandbox.write(inHome(kProperties), "a=1\nrcp.install.id=x\n");

  EXPECT_TRUE(quietService().updateRcpLauncherProperties());

  EXPECT_EQ(properties(),
            "a=1\nrcp.install.id=0503130907\nprovisioning.manifest.version=0503130907\n"
            "rcp.base.location=${rcp.home}/rcp/eclipse/plugins/com.kiv.rcp.base_7\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, UpdateWithoutBaseKeepsTheLocation) {
  _sandbox.write(inHome(kProperties), "rcp.base.location=old\n");

  EXPECT_TRUE(quietService().updateRcpLauncherProperties());

  EXPECT_THAT(properties(), HasSubstr("rcp.base.location=old\n"));
}

TEST_F(LauncherConfigurationTest, UpdateNeedsHomeAndFileAndASaveThatSucceeds) {
  EXPECT_FALSE(InstanceService(std::nullopt).updateRcpLauncherProperties());
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kRename, ENOSPC);
  EXPECT_FALSE(service.updateRcpLauncherProperties());

  _sandbox.remove(inHome(kProperties));
  EXPECT_FALSE(service.updateRcpLauncherProperties());
  EXPECT_FALSE(_sandbox.exists(inHome(kProperties)));
  _sandbox.remove(kHome);
  EXPECT_FALSE(service.updateRcpLauncherProperties());
}

TEST_F(LauncherConfigurationTest, AgentPropertiesAreCopiedByteForByte) {
  EXPECT_TRUE(quietService().copyOgsiAgentProperties(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("osgiagent.properties")), _sandbox.read("template"));
}

TEST_F(LauncherConfigurationTest, ExistingAgentPropertiesStayAndFail) {
  _sandbox.write(inHome("osgiagent.properties"), "mine");

  EXPECT_FALSE(quietService().copyOgsiAgentProperties(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("osgiagent.properties")), "mine");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, MissingAgentTemplateIsAnErrorOnlyWithAHome) {
  EXPECT_FALSE(quietService().copyOgsiAgentProperties(_sandbox.path("none")));
  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Not able to find template for osgiagent.properties."));

  InstanceService unusable(std::nullopt);
  _sandbox.clearLog();
  EXPECT_FALSE(unusable.copyOgsiAgentProperties(_sandbox.path("none")));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, AgentPropertiesNeedAHomeFolder) {
  InstanceService service = quietService();
  _sandbox.remove(kHome);

  EXPECT_FALSE(service.copyOgsiAgentProperties(templateFile()));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherConfigurationTest, VirtualMachinePropertiesAreReplacedByTheTemplate) {
  _sandbox.write(inHome("deploy/jvm.properties"), "old");

  EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(templateFile()));

  EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties")), _sandbox.read("template"));
}

TEST_F(LauncherConfigurationTest, WithoutTemplateVirtualMachinePropertiesAreEmptied) {
  for (const std::optional<std::string>& path :
       {std::optional<std::string>(), std::optional<std::string>(_sandbox.path("none"))}) {
    _sandbox.write(inHome("deploy/jvm.properties"), "old", 0600);

    EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(path));

    EXPECT_EQ(_sandbox.read(inHome("deploy/jvm.properties")), "");
    EXPECT_EQ(_sandbox.mode(inHome("deploy/jvm.properties")), 0775U);
  }
}

TEST_F(LauncherConfigurationTest, MissingDeployFolderIsMadeForTheCurrentUser) {
  _sandbox.remove(inHome("deploy"));
  _sandbox.users().variables["USER"] = "nobody-knows";

  EXPECT_TRUE(quietService().generateJVMPropertiesWithTemplate(std::nullopt));

  EXPECT_EQ(_sandbox.mode(inHome("deploy")), 0775U);
}

TEST_F(LauncherConfigurationTest, DeployFolderThatCannotBeMadeIsAnError) {
  _sandbox.remove(inHome("deploy"));
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kMakeDirectory, ENOSPC);

  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(templateFile()));

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 Not able to create the " + homePath("deploy") + " directory."));
}

TEST_F(LauncherConfigurationTest, VirtualMachinePropertiesNeedAHomeFolder) {
  EXPECT_FALSE(InstanceService(std::nullopt).generateJVMPropertiesWithTemplate(std::nullopt));
  InstanceService service = quietService();
  _sandbox.remove(kHome);
  EXPECT_FALSE(service.generateJVMPropertiesWithTemplate(std::nullopt));
  EXPECT_FALSE(_sandbox.exists(kHome));
}

TEST_F(LauncherConfigurationTest, WorkspaceGivenAtCreationWins) {
  _sandbox.write(inHome(kProperties), "rcp.data=/other\n");

  EXPECT_EQ(InstanceService(home(), "/given").getWorkspace(), "/given");
}

TEST_F(LauncherConfigurationTest, WorkspaceComesFromTheLauncherPropertiesWithHomeReplaced) {
  _sandbox.users().variables["HOME"] = "/Users/a";
  _sandbox.write(inHome(kProperties), "rcp.data=${env.HOME}/Library/ws,${env.HOME},${rcp.home}\n");

  EXPECT_EQ(InstanceService(home()).getWorkspace(), "/Users/a/Library/ws,/Users/a,${rcp.home}");
}

TEST_F(LauncherConfigurationTest, WorkspaceKeepsThePlaceholderWithoutHomeVariable) {
  _sandbox.users().variables.erase("HOME");
  _sandbox.write(inHome(kProperties), "rcp.data=${env.HOME}/ws\n");

  EXPECT_EQ(InstanceService(home()).getWorkspace(), "${env.HOME}/ws");
}

TEST_F(LauncherConfigurationTest, WorkspaceIsUnknownWithoutFileOrKey) {
  EXPECT_EQ(InstanceService(home()).getWorkspace(), std::nullopt);
  _sandbox.remove(inHome(kProperties));
  EXPECT_EQ(InstanceService(home()).getWorkspace(), std::nullopt);
  EXPECT_EQ(InstanceService(std::nullopt).getWorkspace(), std::nullopt);
}

}  // namespace
}  // namespace installer::test
