#include <gmock/gmock.h>

#include <cerrno>

#include "hotfix/instance/InstanceService.h"
#include "support/InstanceFixture.h"

namespace installer::test {
namespace {

using PropertyList::Dictionary;

class InstallInfoTest : public InstanceFixture {
 protected:
  InstanceService service() const { return InstanceService(home()); }
  InstanceService unusable() const { return InstanceService(std::nullopt); }
  bool hasFile() const { return _sandbox.exists(inHome("installInfo.plist")); }
  std::optional<std::string> baseVersionOf(const std::vector<std::string>& plugins) {
    for (const std::string& plugin : plugins)
      _sandbox.makeFolder(inHome("eclipse/plugins/" + plugin));
    return service().getBaseVersion();
  }
};

TEST_F(InstallInfoTest, InstanceIsInstalledWithItsManifest) {
  EXPECT_TRUE(service().hasInstanceInstalled());

  _sandbox.remove(inHome("deploy/install.xml"));

  EXPECT_FALSE(service().hasInstanceInstalled());
}

TEST_F(InstallInfoTest, UnusableServiceAnswersNothing) {
  InstanceService service = unusable();

  EXPECT_FALSE(service.hasInstanceInstalled());
  EXPECT_EQ(service.getBaseVersion(), std::nullopt);
  EXPECT_EQ(service.getInstalledTargetVersion(), std::nullopt);
  EXPECT_EQ(service.getInstalledVersion(), std::nullopt);
  EXPECT_EQ(service.getCurrentHotfixVersion(), std::nullopt);
  EXPECT_FALSE(service.isHotfixApplied());
  EXPECT_FALSE(service.isHotfixInstallWithSkipRunningCheck());
  EXPECT_EQ(service.getInstalledHotfixBundleID(), std::nullopt);
}

TEST_F(InstallInfoTest, UnusableServiceStoresNothing) {
  InstanceService service = unusable();

  service.setInstalledVersion("1");
  service.updateHotfixVersion("1");
  service.saveHotfixSkipRunningCheckProperty(true);
  service.removeHotfixSkipRunningCheckProperty();
  service.saveHotfixBundleID("id");
  service.deleteInstalledHotfixBundleID();

  EXPECT_TRUE(_sandbox.files().operations().empty());
}

TEST_F(InstallInfoTest, BaseVersionIsTheGreatestByText) {
  EXPECT_EQ(baseVersionOf({"com.kiv.rcp.base_6.2.3.20121115-1200",
                           "com.kiv.rcp.base_6.10.0.20130101-0000", "com.kiv.rcp.basement_9"}),
            "6.2.3.20121115-1200");
}

TEST_F(InstallInfoTest, BaseVersionEndsAtTheSecondUnderscore) {
  EXPECT_EQ(baseVersionOf({"com.kiv.rcp.base_6.2.3_x_y"}), "6.2.3");
}

TEST_F(InstallInfoTest, BaseVersionOfABareNameIsEmpty) {
  EXPECT_EQ(baseVersionOf({"com.kiv.rcp.base_"}), "");
}

TEST_F(InstallInfoTest, OtherPluginsHaveNoBaseVersion) {
  EXPECT_EQ(baseVersionOf({"Com.kiv.rcp.base_7", "x.com.kiv.rcp.base_7", "com.kiv.rcp.base"}),
            std::nullopt);
}

TEST_F(InstallInfoTest, BaseVersionIsAbsentWithoutPluginsFolder) {
  _sandbox.remove(inHome("eclipse/plugins"));
  EXPECT_EQ(service().getBaseVersion(), std::nullopt);

  _sandbox.write(inHome("eclipse/plugins"), "");
  EXPECT_EQ(service().getBaseVersion(), std::nullopt);

  _sandbox.write("file", "");
  EXPECT_EQ(InstanceService(_sandbox.path("file")).getBaseVersion(), std::nullopt);
}

TEST_F(InstallInfoTest, TargetVersionIsTheApplicationsMarketingVersion) {
  _sandbox.writePlist(std::string(kBundle) + "/Contents/Info.plist",
                      {{"CFBundleShortVersionString", "6.2.3"}, {"CFBundleVersion", "9"}});

  EXPECT_EQ(service().getInstalledTargetVersion(), "6.2.3");
}

TEST_F(InstallInfoTest, TargetVersionIsAbsentWithoutInfoOrApplication) {
  EXPECT_EQ(service().getInstalledTargetVersion(), std::nullopt);
  _sandbox.makeFolder("opt/rcp");
  EXPECT_EQ(InstanceService(_sandbox.path("opt/rcp")).getInstalledTargetVersion(), std::nullopt);
}

TEST_F(InstallInfoTest, TargetVersionIsAbsentWhereTheInfoDoesNotTellIt) {
  _sandbox.writePlist(std::string(kBundle) + "/Contents/Info.plist", {{"CFBundleVersion", "9"}});

  EXPECT_EQ(service().getInstalledTargetVersion(), std::nullopt);
}

TEST_F(InstallInfoTest, InstalledVersionIsReadWithALine) {
  writeInfo({{"version", "6.2.3"}});
  InstanceService service(home());
  _sandbox.clearLog();

  EXPECT_EQ(service.getInstalledVersion(), "6.2.3");

  EXPECT_THAT(_sandbox.log(),
              ::testing::ElementsAre(
                  Says(LogLevel::info, "Get installInfo: " + homePath("installInfo.plist"))));
}

TEST_F(InstallInfoTest, ReadersAnswerNothingWithoutFileOrKey) {
  EXPECT_EQ(service().getInstalledVersion(), std::nullopt);
  EXPECT_EQ(service().getCurrentHotfixVersion(), std::nullopt);
  EXPECT_FALSE(service().isHotfixApplied());
  EXPECT_EQ(service().getInstalledHotfixBundleID(), std::nullopt);

  writeInfo({{"other", "x"}});

  EXPECT_EQ(service().getInstalledVersion(), std::nullopt);
  EXPECT_EQ(service().getCurrentHotfixVersion(), std::nullopt);
  EXPECT_FALSE(service().isHotfixApplied());
  EXPECT_EQ(service().getInstalledHotfixBundleID(), std::nullopt);
}

TEST_F(InstallInfoTest, WritersCreateTheFile) {
  service().setInstalledVersion("6.2.3");
  EXPECT_EQ(info(), (Dictionary{{"version", "6.2.3"}}));

  _sandbox.remove(inHome("installInfo.plist"));
  service().updateHotfixVersion("6.2.3.1");
  EXPECT_EQ(info(), (Dictionary{{"hotfixVersion", "6.2.3.1"}}));

  _sandbox.remove(inHome("installInfo.plist"));
  service().saveHotfixSkipRunningCheckProperty(false);
  EXPECT_EQ(info(), (Dictionary{{"SKIPRUNNINGCHECK", "false"}}));
}

TEST_F(InstallInfoTest, WritersKeepEverythingElse) {
  writeInfo({{"number", 5}, {"hotfixVersion", "1"}, {"list", PropertyList::Array{"a"}}});

  service().updateHotfixVersion("2");
  service().setInstalledVersion("6");
  service().saveHotfixSkipRunningCheckProperty(true);

  EXPECT_EQ(info(), (Dictionary{{"number", 5},
                                {"hotfixVersion", "2"},
                                {"list", PropertyList::Array{"a"}},
                                {"version", "6"},
                                {"SKIPRUNNINGCHECK", "true"}}));
  EXPECT_EQ(service().getCurrentHotfixVersion(), "2");
  EXPECT_TRUE(service().isHotfixApplied());
}

TEST_F(InstallInfoTest, AbsentInstalledVersionChangesNothing) {
  service().setInstalledVersion(std::nullopt);
  EXPECT_FALSE(hasFile());

  writeInfo({{"version", "6"}});
  service().setInstalledVersion(std::nullopt);

  EXPECT_EQ(service().getInstalledVersion(), "6");
}

TEST_F(InstallInfoTest, AbsentHotfixVersionRemovesTheKey) {
  writeInfo({{"version", "6"}, {"hotfixVersion", "1"}});

  service().updateHotfixVersion(std::nullopt);

  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
}

TEST_F(InstallInfoTest, AbsentHotfixVersionWithoutFileWritesAnEmptyOne) {
  service().updateHotfixVersion(std::nullopt);

  EXPECT_EQ(info(), Dictionary());
}

TEST_F(InstallInfoTest, SkipFlagIsTrueForTheTextTrueOnly) {
  for (const char* text : {"TRUE", "True", "yes", "1", "false", "true ", ""}) {
    writeInfo({{"SKIPRUNNINGCHECK", text}});
    EXPECT_FALSE(service().isHotfixInstallWithSkipRunningCheck()) << text;
  }
  writeInfo({{"SKIPRUNNINGCHECK", "true"}});
  EXPECT_TRUE(service().isHotfixInstallWithSkipRunningCheck());
}

TEST_F(InstallInfoTest, FileWithoutSkipFlagCountsAsSkipping) {
  writeInfo({{"version", "6"}});
  EXPECT_TRUE(service().isHotfixInstallWithSkipRunningCheck());
  EXPECT_FALSE(service().isHotfixApplied());
}

TEST_F(InstallInfoTest, FileThatDoesNotTellTheSkipFlagAsTextCountsAsSkipping) {
  writeInfo({{"SKIPRUNNINGCHECK", false}});
  EXPECT_TRUE(service().isHotfixInstallWithSkipRunningCheck());

  _sandbox.write(inHome("installInfo.plist"), "half an edit <dict>");
  EXPECT_TRUE(service().isHotfixInstallWithSkipRunningCheck());
}

TEST_F(InstallInfoTest, MissingFileDoesNotCountAsSkipping) {
  EXPECT_FALSE(service().isHotfixInstallWithSkipRunningCheck());
}

TEST_F(InstallInfoTest, SkipFlagIsRemovedAlone) {
  writeInfo({{"version", "6"}, {"SKIPRUNNINGCHECK", "true"}});

  service().removeHotfixSkipRunningCheckProperty();

  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
}

TEST_F(InstallInfoTest, RemovalsAndBundleIdNeverCreateTheFile) {
  service().removeHotfixSkipRunningCheckProperty();
  service().saveHotfixBundleID("com.example");
  service().deleteInstalledHotfixBundleID();

  EXPECT_FALSE(hasFile());
}

TEST_F(InstallInfoTest, BundleIdIsStoredReadAndDeleted) {
  writeInfo({{"version", "6"}});

  service().saveHotfixBundleID("com.example.hotfix");
  EXPECT_EQ(service().getInstalledHotfixBundleID(), "com.example.hotfix");
  EXPECT_EQ(info(),
            (Dictionary{{"version", "6"}, {"installedHotfixBundleID", "com.example.hotfix"}}));

  service().deleteInstalledHotfixBundleID();
  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
}

TEST_F(InstallInfoTest, UnreadableFileIsLeftUntouched) {
  _sandbox.write(inHome("installInfo.plist"), "half an edit <dict>");

  service().updateHotfixVersion("1");
  service().setInstalledVersion("1");
  service().saveHotfixBundleID("id");
  service().saveHotfixSkipRunningCheckProperty(true);
  service().removeHotfixSkipRunningCheckProperty();
  service().deleteInstalledHotfixBundleID();

  EXPECT_EQ(_sandbox.read(inHome("installInfo.plist")), "half an edit <dict>");
  EXPECT_EQ(service().getCurrentHotfixVersion(), std::nullopt);
  EXPECT_EQ(service().getInstalledVersion(), std::nullopt);
  EXPECT_EQ(service().getInstalledHotfixBundleID(), std::nullopt);
  EXPECT_FALSE(service().isHotfixApplied());
}

TEST_F(InstallInfoTest, RefusingDiskIsNotReportedAndKeepsTheFile) {
  writeInfo({{"version", "6"}});
  InstanceService service(home());
  _sandbox.clearLog();
  _sandbox.files().failAlways(FileOperation::kRename, ENOSPC);

  service.setInstalledVersion("7");
  service.updateHotfixVersion("7.1");
  service.saveHotfixBundleID("id");

  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
  EXPECT_THAT(_sandbox.log(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace installer::test
