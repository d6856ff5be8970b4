#include <gmock/gmock.h>

#include <cerrno>

#include "hotfix/instance/InstanceService.h"
#include "hotfix/platform/ToldOnce.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using PropertyList::Dictionary;

class InstallInfoTest : public InstanceFixture {
 protected:
  auto told(const std::string& rest) const {
    return Says(LogLevel::error, "\"" + homePath("installInfo.plist") + "\" cannot be " + rest);
  }
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
  proves("CHECK-4");
  EXPECT_TRUE(service().hasInstanceInstalled());

  _sandbox.remove(inHome("deploy/install.xml"));

  EXPECT_FALSE(service().hasInstanceInstalled());
}

TEST_F(InstallInfoTest, UnusableServiceAnswersNothing) {
  proves("INSTANCE-2");
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
  proves("INSTANCE-2");
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
  proves("INSTANCE-10");
  EXPECT_EQ(baseVersionOf({"com.kiv.rcp.base_6.2.3.20121115-1200",
                           "com.kiv.rcp.base_6.10.0.20130101-0000", "com.kiv.rcp.basement_9"}),
            "6.2.3.20121115-1200");
}

TEST_F(InstallInfoTest, BaseVersionEndsAtTheSecondUnderscore) {
  proves("INSTANCE-10");
  EXPECT_EQ(baseVersionOf({"com.kiv.rcp.base_6.2.3_x_y"}), "6.2.3");
}

TEST_F(InstallInfoTest, BaseVersionOfABareNameIsEmpty) {
  proves("INSTANCE-10");
  EXPECT_EQ(baseVersionOf({"com.kiv.rcp.base_"}), "");
}

TEST_F(InstallInfoTest, OtherPluginsHaveNoBaseVersion) {
  proves("INSTANCE-10");
  EXPECT_EQ(baseVersionOf({"Com.kiv.rcp.base_7", "x.com.kiv.rcp.base_7", "com.kiv.rcp.base"}),
            std::nullopt);
}

TEST_F(InstallInfoTest, BaseVersionIsAbsentWithoutPluginsFolder) {
  proves("INSTANCE-10");
  _sandbox.remove(inHome("eclipse/plugins"));
  EXPECT_EQ(service().getBaseVersion(), std::nullopt);

  _sandbox.write(inHome("eclipse/plugins"), "");
  EXPECT_EQ(service().getBaseVersion(), std::nullopt);

  _sandbox.write("file", "");
  EXPECT_EQ(InstanceService(_sandbox.path("file")).getBaseVersion(), std::nullopt);
}

TEST_F(InstallInfoTest, TargetVersionIsTheApplicationsMarketingVersion) {
  proves("INSTANCE-11");
  _sandbox.writePlist(std::string(kBundle) + "/Contents/Info.plist",
                      {{"CFBundleShortVersionString", "6.2.3"}, {"CFBundleVersion", "9"}});

  EXPECT_EQ(service().getInstalledTargetVersion(), "6.2.3");
}

TEST_F(InstallInfoTest, TargetVersionIsAbsentWithoutInfoOrApplication) {
  proves("INSTANCE-11");
  EXPECT_EQ(service().getInstalledTargetVersion(), std::nullopt);
  _sandbox.makeFolder("opt/rcp");
  EXPECT_EQ(InstanceService(_sandbox.path("opt/rcp")).getInstalledTargetVersion(), std::nullopt);
}

TEST_F(InstallInfoTest, TargetVersionIsAbsentWhereTheInfoDoesNotTellIt) {
  proves("INSTANCE-11");
  _sandbox.writePlist(std::string(kBundle) + "/Contents/Info.plist", {{"CFBundleVersion", "9"}});

  EXPECT_EQ(service().getInstalledTargetVersion(), std::nullopt);
}

TEST_F(InstallInfoTest, InstalledVersionIsReadWithALine) {
  proves("INFO-1");
  writeInfo({{"version", "6.2.3"}});
  InstanceService service(home());
  _sandbox.clearLog();

  EXPECT_EQ(service.getInstalledVersion(), "6.2.3");

  EXPECT_THAT(_sandbox.log(),
              ::testing::ElementsAre(
                  Says(LogLevel::info, "Get installInfo: " + homePath("installInfo.plist"))));
}

TEST_F(InstallInfoTest, ReadersAnswerNothingWithoutFileOrKey) {
  proves("INFO-1");
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
  proves("INFO-2");
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
  proves("INFO-2");
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
  proves("INFO-3");
  service().setInstalledVersion(std::nullopt);
  EXPECT_FALSE(hasFile());

  writeInfo({{"version", "6"}});
  service().setInstalledVersion(std::nullopt);

  EXPECT_EQ(service().getInstalledVersion(), "6");
}

TEST_F(InstallInfoTest, AbsentHotfixVersionRemovesTheKey) {
  proves("INFO-3");
  writeInfo({{"version", "6"}, {"hotfixVersion", "1"}});

  service().updateHotfixVersion(std::nullopt);

  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
}

TEST_F(InstallInfoTest, AbsentHotfixVersionWithoutFileWritesAnEmptyOne) {
  proves("INFO-3");
  service().updateHotfixVersion(std::nullopt);

  EXPECT_EQ(info(), Dictionary());
}

TEST_F(InstallInfoTest, SkipFlagIsTrueForTheTextTrueOnly) {
  proves("INFO-4");
  for (const char* text : {"TRUE", "True", "yes", "1", "false", "true ", ""}) {
    writeInfo({{"SKIPRUNNINGCHECK", text}});
    EXPECT_FALSE(service().isHotfixInstallWithSkipRunningCheck()) << text;
  }
  writeInfo({{"SKIPRUNNINGCHECK", "true"}});
  EXPECT_TRUE(service().isHotfixInstallWithSkipRunningCheck());
}

TEST_F(InstallInfoTest, FileWithoutSkipFlagCountsAsSkipping) {
  proves("INFO-4");
  writeInfo({{"version", "6"}});
  EXPECT_TRUE(service().isHotfixInstallWithSkipRunningCheck());
  EXPECT_FALSE(service().isHotfixApplied());
}

TEST_F(InstallInfoTest, SkipFlagOfAnotherTypeIsNotTheTextTrue) {
  proves("INFO-4");
  for (const PropertyList::Value& value :
       {PropertyList::Value(true), PropertyList::Value(false), PropertyList::Value(1),
        PropertyList::Value(PropertyList::Array{"true"})}) {
    writeInfo({{"SKIPRUNNINGCHECK", value}});
    EXPECT_FALSE(service().isHotfixInstallWithSkipRunningCheck());
  }
}

TEST_F(InstallInfoTest, UnreadableFileDoesNotCountAsSkipping) {
  proves("INFO-4");
  _sandbox.write(inHome("installInfo.plist"), "half an edit <dict>");
  EXPECT_FALSE(service().isHotfixInstallWithSkipRunningCheck());

  writeInfo({{"version", "6"}});
  _sandbox.files().failReading(homePath("installInfo.plist"), EIO);
  EXPECT_FALSE(service().isHotfixInstallWithSkipRunningCheck());
}

TEST_F(InstallInfoTest, MissingFileDoesNotCountAsSkipping) {
  proves("INFO-4");
  EXPECT_FALSE(service().isHotfixInstallWithSkipRunningCheck());
}

TEST_F(InstallInfoTest, SkipFlagIsRemovedAlone) {
  proves("INFO-4");
  writeInfo({{"version", "6"}, {"SKIPRUNNINGCHECK", "true"}});

  service().removeHotfixSkipRunningCheckProperty();

  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
}

TEST_F(InstallInfoTest, RemovalsAndBundleIdNeverCreateTheFile) {
  proves("INFO-5");
  service().removeHotfixSkipRunningCheckProperty();
  service().saveHotfixBundleID("com.example");
  service().deleteInstalledHotfixBundleID();

  EXPECT_FALSE(hasFile());
}

TEST_F(InstallInfoTest, BundleIdIsStoredReadAndDeleted) {
  proves("INFO-5");
  writeInfo({{"version", "6"}});

  service().saveHotfixBundleID("com.example.hotfix");
  EXPECT_EQ(service().getInstalledHotfixBundleID(), "com.example.hotfix");
  EXPECT_EQ(info(),
            (Dictionary{{"version", "6"}, {"installedHotfixBundleID", "com.example.hotfix"}}));

  service().deleteInstalledHotfixBundleID();
  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
}

TEST_F(InstallInfoTest, UnreadableFileIsLeftUntouched) {
  proves("INFO-6");
  const ToldOnce lines;
  _sandbox.write(inHome("installInfo.plist"), "half an edit <dict>");

  service().updateHotfixVersion("1");
  service().setInstalledVersion("1");
  service().saveHotfixBundleID("id");
  service().saveHotfixSkipRunningCheckProperty(true);
  service().removeHotfixSkipRunningCheckProperty();
  service().deleteInstalledHotfixBundleID();

  EXPECT_THAT(linesAt(LogLevel::error), ::testing::SizeIs(1));
  EXPECT_THAT(_sandbox.log(),
              ::testing::Contains(told("read: No property list with a dictionary")));
  EXPECT_EQ(_sandbox.read(inHome("installInfo.plist")), "half an edit <dict>");
  EXPECT_EQ(service().getCurrentHotfixVersion(), std::nullopt);
  EXPECT_EQ(service().getInstalledVersion(), std::nullopt);
  EXPECT_EQ(service().getInstalledHotfixBundleID(), std::nullopt);
  EXPECT_FALSE(service().isHotfixApplied());
}

TEST_F(InstallInfoTest, FileThatCannotBeReadKeepsAllKeys) {
  proves("INFO-6");
  const ToldOnce lines;
  const Dictionary entries{{"version", "6"}, {"theirs", 5}, {"hotfixVersion", "6.1"}};
  writeInfo(entries);
  _sandbox.files().failReading(homePath("installInfo.plist"), EIO);
  InstanceService service(home());
  _sandbox.clearLog();

  service.setInstalledVersion("7");
  service.updateHotfixVersion("7.1");
  service.updateHotfixVersion(std::nullopt);
  service.saveHotfixSkipRunningCheckProperty(true);
  service.removeHotfixSkipRunningCheckProperty();
  service.saveHotfixBundleID("id");
  service.deleteInstalledHotfixBundleID();

  EXPECT_EQ(service.getCurrentHotfixVersion(), std::nullopt);
  EXPECT_THAT(_sandbox.log(), ::testing::ElementsAre(told("read: Input/output error")));
  _sandbox.files().stopFailing();
  EXPECT_EQ(info(), entries);
}

TEST_F(InstallInfoTest, ReaderTellsThatTheFileCannotBeRead) {
  proves("INFO-6");
  writeInfo({{"hotfixVersion", "6.1"}});
  _sandbox.files().failReading(homePath("installInfo.plist"), EACCES);
  InstanceService service(home());
  _sandbox.clearLog();

  EXPECT_EQ(service.getCurrentHotfixVersion(), std::nullopt);

  EXPECT_THAT(_sandbox.log(), ::testing::ElementsAre(told("read: Permission denied")));
}

TEST_F(InstallInfoTest, RemovalsAndBundleIdSayNothingOfAnUnreadableFile) {
  proves("INFO-7");
  _sandbox.write(inHome("installInfo.plist"), "half an edit <dict>");
  InstanceService service(home());
  _sandbox.clearLog();

  service.removeHotfixSkipRunningCheckProperty();
  service.saveHotfixBundleID("id");
  service.deleteInstalledHotfixBundleID();

  EXPECT_THAT(_sandbox.log(), ::testing::IsEmpty());
  EXPECT_EQ(_sandbox.read(inHome("installInfo.plist")), "half an edit <dict>");
}

TEST_F(InstallInfoTest, ManifestThatCannotBeLookedAtIsToldAndNoInstance) {
  InstanceService service(home());
  _sandbox.files().failReading(homePath("deploy/install.xml"), EIO);
  _sandbox.clearLog();

  EXPECT_FALSE(service.hasInstanceInstalled());

  EXPECT_THAT(linesAt(LogLevel::error),
              ::testing::ElementsAre("\"" + homePath("deploy/install.xml") +
                                     "\" cannot be looked at: Input/output error"));
}

TEST_F(InstallInfoTest, RefusingDiskChangesNoAnswerKeepsTheFileAndIsToldOnce) {
  proves("INFO-6", "FILES-21");
  const ToldOnce lines;
  writeInfo({{"version", "6"}});
  InstanceService service(home());
  _sandbox.clearLog();
  _sandbox.files().failAlways(FileOperation::kRename, ENOSPC);

  service.setInstalledVersion("7");
  service.updateHotfixVersion("7.1");
  service.saveHotfixBundleID("id");

  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
  EXPECT_THAT(_sandbox.log(), ::testing::ElementsAre(told("written: No space left on device")));
}

}  // namespace
}  // namespace installer::test
