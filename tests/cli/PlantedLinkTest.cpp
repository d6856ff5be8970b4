#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using test::ChildScript;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

constexpr const char* kVault = "/var/root";
constexpr const char* kSecret = "secret=only root may know\n";

// Users plant links to what only root may read or change, before a run and while it is at work.
class PlantedLinkTest : public InstallerTest {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    for (const char* name : {"file", ".keystore", "install.xml", "install.update.xml",
                             "uninstall.hotfix.xml", "rcpinstall.properties"})
      _sandbox.writeFile(guarded(name), kSecret, 0600);
    _sandbox.setMode(kVault, 0700);
    _before = _sandbox.tree(kVault);
  }

  // Nothing was changed there, nothing of it can be read elsewhere.
  void TearDown() override {
    EXPECT_EQ(_before, _sandbox.tree(kVault));
    for (const std::string folder : {"/Applications", "/Users", "/tmp", "/Volumes", "/Library"})
      for (const auto& [path, entry] : _sandbox.tree(folder))
        EXPECT_TRUE(entry.find("only root may know") == std::string::npos ||
                    isGuarded(folder + path))
            << path;
  }

  static std::string guarded(const std::string& name) { return std::string(kVault) + "/" + name; }

  // Whether the path is another name of the guarded file, which is nobody's to read.
  bool isGuarded(const std::string& path) const {
    return std::filesystem::equivalent(_sandbox.host(path), _sandbox.host(guarded("file")));
  }
  void plant(const std::string& path, const std::string& target = guarded("file")) {
    _sandbox.remove(path);
    _sandbox.makeLink(path, target);
  }
  void plantHardLink(const std::string& path) {
    _sandbox.remove(path);
    std::filesystem::create_hard_link(_sandbox.host(guarded("file")), _sandbox.host(path));
    _before = _sandbox.tree(kVault);
  }
  // The launcher's n-th start exchanges the folder for a link.
  void exchangeAtStart(int start, const std::string& folder) {
    _sandbox.script("rcplauncher", start,
                    ChildScript()
                        .write(_instance.result(), "rc=0\n")
                        .rename(folder, folder + ".old")
                        .link(folder, kVault));
  }

  std::map<std::string, std::string> _before;
};

// --- Before the run ------------------------------------------------------------------------------

struct PlantedFile {
  std::string name;
  std::string path;
};

class PlantedFileTest : public PlantedLinkTest,
                        public ::testing::WithParamInterface<PlantedFile> {};

TEST_P(PlantedFileTest, LinkDoesNotPublishItsTarget) {
  proves("FILES-23");
  plant(GetParam().path);

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

TEST_P(PlantedFileTest, SecondNameDoesNotPublishTheFile) {
  proves("FILES-24");
  plantHardLink(GetParam().path);

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

INSTANTIATE_TEST_SUITE_P(
    Files, PlantedFileTest,
    ::testing::Values(PlantedFile{"InstallSettings", Instance().installProperties()},
                      PlantedFile{"Customization", Instance().customization()},
                      PlantedFile{"LauncherSettings", Instance().launcherProperties()},
                      PlantedFile{"InstallInfo", Instance().info()},
                      PlantedFile{"InstallManifest", Instance().deploy("install.xml")},
                      PlantedFile{"UpdateManifest", Instance().deploy("install.update.xml")}),
    CaseName());

TEST_F(PlantedLinkTest, LinkedRecordIsToldAndKept) {
  proves("FILES-23");
  plant(_instance.info());

  EXPECT_THAT(install().status, AnyOf(0, 1));

  EXPECT_TRUE(_sandbox.isLink(_instance.info()));
  EXPECT_THAT(_sandbox.texts("Error"),
              Contains(HasSubstr("\"" + _instance.info() + "\" cannot be")));
}

// --- While the run is at work --------------------------------------------------------------------

TEST_F(PlantedLinkTest, DeployThatBecomesALinkLetsNothingOut) {
  proves("FILES-23");
  for (int start = 1; start <= 3; ++start) {
    exchangeAtStart(start, _instance.home() + "/deploy");

    EXPECT_THAT(install().status, AnyOf(0, 1)) << start;
  }
}

TEST_F(PlantedLinkTest, RcpHomeThatBecomesALinkLetsNothingOut) {
  proves("FILES-23");
  exchangeAtStart(1, _instance.home());

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

TEST_F(PlantedLinkTest, BundleThatBecomesALinkIsWorkedOnAllTheSame) {
  proves("FILES-23");
  exchangeAtStart(2, _instance.bundle);

  EXPECT_THAT(install().status, AnyOf(0, 1));

  const std::string moved = _instance.bundle + ".old/Contents/MacOS/rcp/";
  EXPECT_TRUE(_sandbox.isRegular(moved + "deploy/install.update.xml"));
}

TEST_F(PlantedLinkTest, PackageThatBecomesALinkIsInstalledAllTheSame) {
  proves("FILES-23");
  exchangeAtStart(1, _package.folder);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(PlantedLinkTest, DeployBesideThePackageThatBecomesALinkIsCopiedAllTheSame) {
  proves("FILES-23");
  const std::string deploy = _package.deployFile("");
  exchangeAtStart(1, deploy.substr(0, deploy.find_last_not_of('/') + 1));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(PlantedLinkTest, DataFolderThatBecomesALinkIsWorkedOnAllTheSame) {
  proves("FILES-23");
  const std::string data = "/Users/alice/data";
  _sandbox.writeFile(data + "/.config/rcpinstall.properties", "a=1\n");
  exchangeAtStart(1, data);

  EXPECT_EQ(0, installWithData(data).status);

  EXPECT_THAT(*_sandbox.readFile(data + ".old/.config/rcpinstall.properties"),
              HasSubstr("rcp.install.id="));
}

TEST_F(PlantedLinkTest, SettingsFolderThatBecomesALinkLetsNothingOut) {
  proves("FILES-23");
  exchangeAtStart(1, _instance.data() + "/.config");

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

TEST_F(PlantedLinkTest, SharedFolderThatBecomesALinkIsNotHandedOver) {
  proves("FILES-23");
  _sandbox.writeFile(_instance.shared() + "/file", "x");
  _sandbox.script("rcplauncher", 2,
                  ChildScript()
                      .write(_instance.result(), "rc=0\n")
                      .rename(_instance.shared(), _instance.shared() + ".old")
                      .rename("/Users/bob/planted", _instance.shared()));
  _sandbox.makeLink("/Users/bob/planted", kVault);
  _sandbox.giveTo("/Users/bob/planted", CliSandbox::kBob, CliSandbox::kBob);

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

}  // namespace
}  // namespace installer::cli
