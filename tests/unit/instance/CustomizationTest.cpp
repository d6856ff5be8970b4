#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>

#include "hotfix/instance/InstanceService.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

template <class Service>
concept TakesALiteral = requires(Service service) {
  service.updatePermissions(true, "workspace");
};
static_assert(!TakesALiteral<InstanceService>);

constexpr const char* kIni = "plugin_customization.ini";
constexpr const char* kBaseIni = "eclipse/plugins/com.kiv.rcp.base_6.2/plugin_customization.ini";

class InstanceCustomizationTest : public InstanceFixture {
 protected:
  InstanceCustomizationTest() { _sandbox.write("pkg/new.ini", "# new\nk=2\nn=4\n"); }

  std::string given() const { return _sandbox.path("pkg/new.ini"); }
  std::string instanceFile() const { return _sandbox.read(inHome(kIni)); }
  // How many files have been put in place so far.
  std::ptrdiff_t writes() {
    return std::ranges::count(_sandbox.files().operations(), FileOperation::kRename);
  }
  InstanceService quietService(const std::optional<std::string>& data = std::nullopt) {
    InstanceService service(home(), data);
    _sandbox.clearLog();
    return service;
  }
};

TEST_F(InstanceCustomizationTest, MissingInstanceFileBecomesAByteCopy) {
  proves("SETTINGS-1");
  EXPECT_TRUE(quietService().mergePluginCustomizationWithRcphome(given()));

  EXPECT_EQ(instanceFile(), "# new\nk=2\nn=4\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceCustomizationTest, GivenValuesWinAndOldCommentsGo) {
  _sandbox.write(inHome(kIni), "# old\nk=1\nj=3\n");

  EXPECT_TRUE(quietService().mergePluginCustomizationWithRcphome(given()));

  EXPECT_EQ(instanceFile(), "k=2\nj=3\nn=4\n");
}

TEST_F(InstanceCustomizationTest, InstanceFileIsWrittenTwice) {
  proves("SETTINGS-4");
  _sandbox.write(inHome(kIni), "k=1\n");
  InstanceService service = quietService();
  const auto before = writes();

  EXPECT_TRUE(service.mergePluginCustomizationWithRcphome(given()));

  EXPECT_EQ(writes() - before, 2);
}

TEST_F(InstanceCustomizationTest, LinkedSettingsBesideTheLinkAreTaken) {
  proves("FILES-22");
  _sandbox.makeLink("pkg/link.ini", "new.ini");
  const std::string link = _sandbox.path("pkg/link.ini");

  EXPECT_TRUE(quietService().mergePluginCustomizationWithRcphome(link));
  EXPECT_EQ(instanceFile(), "# new\nk=2\nn=4\n");

  _sandbox.write(inHome(kIni), "k=1\n");
  EXPECT_TRUE(quietService().mergePluginCustomizationWithRcphome(link));
  EXPECT_EQ(instanceFile(), "k=2\nn=4\n");

  _sandbox.write(inHome(kBaseIni), "k=1\n");
  EXPECT_TRUE(quietService().mergePluginCustomizationWithBase(link));
  EXPECT_EQ(instanceFile(), "k=2\nn=4\n");
}

TEST_F(InstanceCustomizationTest, LinkedSettingsFromElsewhereComeIntoNoFile) {
  proves("FILES-22");
  _sandbox.write("secret", "password=1\n");
  _sandbox.makeLink("pkg/link.ini", "../secret");
  const std::string link = _sandbox.path("pkg/link.ini");
  InstanceService service = quietService();

  EXPECT_TRUE(service.mergePluginCustomizationWithRcphome(link));
  EXPECT_FALSE(_sandbox.exists(inHome(kIni)));

  _sandbox.write(inHome(kIni), "# old\nk=1\n");
  EXPECT_TRUE(service.mergePluginCustomizationWithRcphome(link));
  EXPECT_EQ(instanceFile(), "k=1\n") << "as for a missing file";

  _sandbox.write(inHome(kBaseIni), "# base\nk=1\n");
  EXPECT_FALSE(service.mergePluginCustomizationWithBase(link));
  EXPECT_EQ(_sandbox.read(inHome(kBaseIni)), "# base\nk=1\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceCustomizationTest, LinkedKeyStoresAreFilesUnlessTheyLeadElsewhere) {
  proves("KEYSTORE-4");
  _sandbox.write("secret", "secret");
  _sandbox.write("pkg/ks/store", "store");
  _sandbox.makeLink("pkg/ks/.keystore.in", "store");
  _sandbox.makeLink("pkg/ks/.keystore.out", _sandbox.path("secret"));

  quietService().copyKeyStores(_sandbox.path("pkg/ks"));

  EXPECT_EQ(_sandbox.read(inHome("deploy/.keystore.in")), "store");
  EXPECT_THAT(std::filesystem::read_symlink(homePath("deploy/.keystore.out")),
              _sandbox.path("secret"));
  EXPECT_TRUE(std::filesystem::is_regular_file(
      std::filesystem::symlink_status(homePath("deploy/.keystore.in"))));
}

TEST_F(InstanceCustomizationTest, MissingGivenFileRewritesTheInstanceFileOnce) {
  proves("SETTINGS-4");
  _sandbox.write(inHome(kIni), "# old\nk=1\n");
  InstanceService service = quietService();
  const auto before = writes();

  EXPECT_TRUE(service.mergePluginCustomizationWithRcphome(_sandbox.path("none")));

  EXPECT_EQ(instanceFile(), "k=1\n");
  EXPECT_EQ(writes() - before, 1);
}

TEST_F(InstanceCustomizationTest, MissingGivenAndInstanceFileIsASuccessThatMakesNothing) {
  proves("SETTINGS-5");
  EXPECT_TRUE(quietService().mergePluginCustomizationWithRcphome(_sandbox.path("none")));

  EXPECT_FALSE(_sandbox.exists(inHome(kIni)));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceCustomizationTest, FailedSavesOfMergesAreNotLookedAt) {
  proves("SETTINGS-5");
  _sandbox.write(inHome(kIni), "# old\nk=1\n");
  _sandbox.write(inHome(kBaseIni), "# base\nk=1\n");
  InstanceService service = quietService();
  _sandbox.files().failAlways(FileOperation::kRename, ENOSPC);

  EXPECT_TRUE(service.mergePluginCustomizationWithRcphome(given()));
  EXPECT_TRUE(service.mergePluginCustomizationWithBase(given()));

  EXPECT_EQ(instanceFile(), "# old\nk=1\n");
  EXPECT_EQ(_sandbox.read(inHome(kBaseIni)), "# base\nk=1\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceCustomizationTest, FilesThatCannotBeReadKeepAllAndAreNotTold) {
  proves("SETTINGS-9");
  const std::string instance = _sandbox.write(inHome(kIni), "theirs=1\n");
  const std::string base = _sandbox.write(inHome(kBaseIni), "base=1\n");
  InstanceService service = quietService();

  _sandbox.files().failReading(base, EIO);
  EXPECT_TRUE(service.mergePluginCustomizationWithBase(given()));
  EXPECT_EQ(instanceFile(), "theirs=1\n") << "without the base's settings nothing replaces them";
  _sandbox.files().failReading(instance, EIO);
  EXPECT_TRUE(service.mergePluginCustomizationWithRcphome(given()));

  EXPECT_EQ(instanceFile(), "theirs=1\n");
  EXPECT_EQ(_sandbox.read(inHome(kBaseIni)), "base=1\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceCustomizationTest, UnreadableBaseDoesNotReplaceTheInstancesSettings) {
  proves("SETTINGS-9");
  _sandbox.write(inHome(kIni), "theirs=1\n");
  _sandbox.makeFolder(inHome(kBaseIni));

  EXPECT_TRUE(quietService().mergePluginCustomizationWithBase(given()));

  EXPECT_EQ(instanceFile(), "theirs=1\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceCustomizationTest, MergeIntoTheInstanceNeedsPathAndHomeFolder) {
  proves("SETTINGS-7");
  EXPECT_FALSE(quietService().mergePluginCustomizationWithRcphome(std::nullopt));
  EXPECT_FALSE(InstanceService(std::nullopt).mergePluginCustomizationWithRcphome(given()));
  InstanceService service = quietService();
  _sandbox.remove(kHome);
  EXPECT_FALSE(service.mergePluginCustomizationWithRcphome(given()));
  _sandbox.write(kHome, "a file now");
  EXPECT_FALSE(service.mergePluginCustomizationWithRcphome(given()));
}

TEST_F(InstanceCustomizationTest, MergeWithBaseRewritesBaseAndInstanceAlike) {
  proves("SETTINGS-8");
  _sandbox.write(inHome(kBaseIni), "# base\nk=1\nj=3\n");
  _sandbox.write(inHome(kIni), "gone=1\n");

  EXPECT_TRUE(quietService().mergePluginCustomizationWithBase(given()));

  EXPECT_EQ(_sandbox.read(inHome(kBaseIni)), "k=2\nj=3\nn=4\n");
  EXPECT_EQ(instanceFile(), "k=2\nj=3\nn=4\n");
}

TEST_F(InstanceCustomizationTest, MergeWithBaseThatHasNoFileSucceedsAndWritesNothing) {
  proves("SETTINGS-8");
  _sandbox.makeFolder(inHome("eclipse/plugins/com.kiv.rcp.base_6.2"));

  EXPECT_TRUE(quietService().mergePluginCustomizationWithBase(given()));

  EXPECT_FALSE(_sandbox.exists(inHome(kBaseIni)));
  EXPECT_FALSE(_sandbox.exists(inHome(kIni)));
}

TEST_F(InstanceCustomizationTest, MergeWithBaseNeedsHomePathFileAndBase) {
  proves("SETTINGS-8");
  EXPECT_FALSE(InstanceService(std::nullopt).mergePluginCustomizationWithBase(given()));
  EXPECT_FALSE(quietService().mergePluginCustomizationWithBase(given()));
  _sandbox.makeFolder(inHome("eclipse/plugins/com.kiv.rcp.base_6.2"));
  EXPECT_FALSE(quietService().mergePluginCustomizationWithBase(_sandbox.path("none")));
  _sandbox.write(inHome(kBaseIni), "# base\nk=1\n");
  EXPECT_FALSE(quietService().mergePluginCustomizationWithBase(std::nullopt));
  EXPECT_FALSE(quietService().mergePluginCustomizationWithBase(_sandbox.path("none")));

  EXPECT_EQ(_sandbox.read(inHome(kBaseIni)), "# base\nk=1\n");
  EXPECT_FALSE(_sandbox.exists(inHome(kIni)));
}

TEST_F(InstanceCustomizationTest, KeyStoresAreReplacedWithALineEach) {
  _sandbox.write(inHome("deploy/.keystore"), "old");
  _sandbox.write(inHome("deploy/.KeyStore2"), "old");
  _sandbox.write(inHome("deploy/trust.keystore"), "stays");
  _sandbox.write("pkg/ks/.keystore", "new");
  _sandbox.write("pkg/ks/.KEYSTORE.bak", "new bak");
  _sandbox.write("pkg/ks/client.keystore", "not one");

  quietService().copyKeyStores(_sandbox.path("pkg/ks"));

  const std::string deploy = homePath("deploy");
  const std::string source = _sandbox.path("pkg/ks");
  EXPECT_EQ(_sandbox.read(inHome("deploy/.keystore")), "new");
  EXPECT_EQ(_sandbox.read(inHome("deploy/.KEYSTORE.bak")), "new bak");
  EXPECT_EQ(_sandbox.read(inHome("deploy/trust.keystore")), "stays");
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/.KeyStore2")));
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/client.keystore")));
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("6 .keystore source files are in " + source + ".",
                  "6 Delete existing keystore files '.KeyStore2' from " + deploy + "/.KeyStore2.",
                  "6 Delete existing keystore files '.keystore' from " + deploy + "/.keystore.",
                  "6 Copy keystore file '.KEYSTORE.bak' from " + source + "/.KEYSTORE.bak to " +
                      deploy + "/.KEYSTORE.bak.",
                  "6 Copy keystore file '.keystore' from " + source + "/.keystore to " + deploy +
                      "/.keystore."));
}

TEST_F(InstanceCustomizationTest, KeyStoresThatFailAreToldAsTheOthersAndDoNotKeepThemBack) {
  proves("KEYSTORE-3");
  _sandbox.write(inHome("deploy/.keystore1"), "stays");
  _sandbox.write(inHome("deploy/.keystore2"), "old");
  _sandbox.makePipe("pkg/ks/.keystore0");
  _sandbox.write("pkg/ks/.keystore1", "new");
  _sandbox.write("pkg/ks/.keystore2", "new");
  InstanceService service = quietService();
  _sandbox.files().failNext(FileOperation::kUnlink, EPERM);

  service.copyKeyStores(_sandbox.path("pkg/ks"));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/.keystore0")));
  EXPECT_EQ(_sandbox.read(inHome("deploy/.keystore1")), "stays");
  EXPECT_EQ(_sandbox.read(inHome("deploy/.keystore2")), "new");
  EXPECT_THAT(linesAt(LogLevel::info),
              ElementsAre(StartsWith(".keystore source"),
                          StartsWith("Delete existing keystore files '.keystore1' "),
                          StartsWith("Delete existing keystore files '.keystore2' "),
                          StartsWith("Copy keystore file '.keystore0' "),
                          StartsWith("Copy keystore file '.keystore1' "),
                          StartsWith("Copy keystore file '.keystore2' ")));
  EXPECT_EQ(_sandbox.log().size(), 6U);
}

TEST_F(InstanceCustomizationTest, SourceWithoutKeyStoresLeavesNone) {
  proves("KEYSTORE-2");
  _sandbox.write(inHome("deploy/.keystore"), "old");

  quietService().copyKeyStores(_sandbox.path("missing"));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/.keystore")));
  EXPECT_EQ(_sandbox.log().size(), 2U);
}

TEST_F(InstanceCustomizationTest, WithoutHomeKeyStoresAreNotEvenTold) {
  proves("KEYSTORE-3");
  InstanceService service(std::nullopt);
  _sandbox.clearLog();

  service.copyKeyStores(_sandbox.path("pkg"));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceCustomizationTest, KeyStoreThatIsAFolderIsReplacedWhole) {
  _sandbox.write(inHome("deploy/.keystore/old"), "old");
  _sandbox.write("pkg/ks/.keystore/new", "new");

  quietService().copyKeyStores(_sandbox.path("pkg/ks"));

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/.keystore/old")));
  EXPECT_EQ(_sandbox.read(inHome("deploy/.keystore/new")), "new");
}

TEST_F(InstanceCustomizationTest, ExtrasAreCopiedWholeWhenThereAreNone) {
  _sandbox.write("pkg/extras/a/x", "x");

  quietService().copyExtras(_sandbox.path("pkg/extras"));

  EXPECT_EQ(_sandbox.read(inHome("deploy/extras/a/x")), "x");
  EXPECT_THAT(numberedLines(),
              ElementsAre("6 Begin to copy files from " + _sandbox.path("pkg/extras") + " to " +
                          homePath("deploy/extras") + " "));
}

TEST_F(InstanceCustomizationTest, ExtrasAreMergedIntoExistingOnes) {
  _sandbox.write("pkg/extras/b", "new");
  _sandbox.write(inHome("deploy/extras/b"), "old");
  _sandbox.write(inHome("deploy/extras/c"), "kept");

  quietService().copyExtras(_sandbox.path("pkg/extras"));

  EXPECT_EQ(_sandbox.read(inHome("deploy/extras/b")), "new");
  EXPECT_EQ(_sandbox.read(inHome("deploy/extras/c")), "kept");
}

TEST_F(InstanceCustomizationTest, NoExtrasAreNotTold) {
  _sandbox.makeFolder("pkg/empty");
  InstanceService service = quietService();

  service.copyExtras(std::nullopt);
  service.copyExtras(_sandbox.path("missing"));
  service.copyExtras(given());
  service.copyExtras(_sandbox.path("pkg/empty"));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/extras")));
}

TEST_F(InstanceCustomizationTest, ExtrasNeedAHome) {
  proves("EXTRAS-2");
  InstanceService service(std::nullopt);
  _sandbox.clearLog();

  service.copyExtras(_sandbox.path("pkg"));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

class InstancePermissionsTest : public InstanceCustomizationTest {
 protected:
  InstancePermissionsTest() {
    _sandbox.write(inHome("file"), "", 0600);
    _sandbox.write(inHome("../shared/file"), "", 0600);
    _sandbox.write(inHome("../beside"), "", 0600);
    _sandbox.write("data/file", "", 0600);
  }
  std::vector<bool> changed() const {
    std::vector<bool> result;
    for (const std::string& file :
         {inHome("file"), inHome("../shared/file"), std::string("data/file")})
      result.push_back(_sandbox.mode(file) == 0775);
    return result;
  }
};

TEST_F(InstancePermissionsTest, FlagTreatsHomeAndSharedFolder) {
  proves("RIGHTS-3");
  quietService().updatePermissions(true, std::optional<std::string>());

  EXPECT_THAT(changed(), ElementsAre(true, true, false));
  EXPECT_EQ(_sandbox.mode(inHome("../beside")), 0600U);
}

TEST_F(InstancePermissionsTest, WorkspaceIsTreatedWhateverTheFlag) {
  proves("RIGHTS-3");
  quietService().updatePermissions(false, _sandbox.path("data"));

  EXPECT_THAT(changed(), ElementsAre(false, false, true));
}

TEST_F(InstancePermissionsTest, NothingIsTreatedWithoutFlagAndWorkspace) {
  proves("RIGHTS-3");
  quietService().updatePermissions(false, std::optional<std::string>());
  quietService(_sandbox.path("data")).updatePermissions(false, false);

  EXPECT_THAT(changed(), ElementsAre(false, false, false));
}

TEST_F(InstancePermissionsTest, WorkspaceIsLookedUpOnDemand) {
  proves("RIGHTS-3");
  quietService(_sandbox.path("data")).updatePermissions(false, true);

  EXPECT_THAT(changed(), ElementsAre(false, false, true));
}

TEST_F(InstancePermissionsTest, UnknownWorkspaceIsNone) {
  proves("RIGHTS-3");
  quietService().updatePermissions(true, true);

  EXPECT_THAT(changed(), ElementsAre(true, true, false));
}

TEST_F(InstancePermissionsTest, FailureInOneFolderDoesNotKeepTheOthersBack) {
  proves("RIGHTS-6");
  InstanceService service = quietService();
  _sandbox.users().variables["USER"] = "nobody-knows";

  service.updatePermissions(true, _sandbox.path("data"));

  EXPECT_THAT(changed(), ElementsAre(true, true, true));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstancePermissionsTest, WithoutHomeNothingIsTreated) {
  proves("RIGHTS-3");
  InstanceService(std::nullopt).updatePermissions(true, _sandbox.path("data"));

  EXPECT_THAT(changed(), ElementsAre(false, false, false));
}

}  // namespace
}  // namespace installer::test
