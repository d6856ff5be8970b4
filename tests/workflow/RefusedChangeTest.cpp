#include <gmock/gmock.h>

#include <cerrno>

#include "hotfix/driver/Installer.h"
#include "support/PackageFixture.h"
#include "support/Proves.h"
#include "support/TreeSnapshot.h"

namespace installer::test {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

// One run of the installer in which the disk refuses the change of that number.
class RefusedRun : public PackageFixture {
 public:
  RefusedRun() {
    _sandbox.clock().set(2013, 3, 5, 9, 7);
    _sandbox.write(inHome("plugin_customization.ini"), "old=1\n");
    writeInfo({{"version", "6.2.3"}});
  }

  void TestBody() override {}

  // The run then takes the failure path.
  void startApplication() { _sandbox.processes().add(destination() + "/Quillmere.app/x"); }

  void run(std::size_t refusedChange) {
    _sandbox.files().failAt(refusedChange, ENOSPC);
    _status = runInstaller({"HotfixInstaller", package(), destination(), "-rcpdata", data()});
  }

  bool wasRefused() { return _sandbox.files().hasFailed(); }

  void expectWholeFiles() const {
    EXPECT_THAT(_status, AnyOf(0, 1));
    for (const auto& [name, entry] : snapshotOf(_sandbox.root()))
      EXPECT_THAT(name, Not(HasSubstr(".hotfix-")));
    for (const std::string& list :
         {_sandbox.paths().internalConfiguration, _sandbox.paths().pasteboard})
      EXPECT_TRUE(!_sandbox.exists(list) || !_sandbox.readPlist(list).empty()) << list;
    EXPECT_EQ(*info().find("version"), PropertyList::Value("6.2.3"));
    EXPECT_EQ(_sandbox.read(inHome("deploy/install.xml")), "<manifest/>\n");
    EXPECT_THAT(_sandbox.read(inHome("plugin_customization.ini")),
                AnyOf("old=1\n", "old=1\nnew=1\n"));
    const std::string oldId = "rcp.install.id=0101130000\n";
    EXPECT_THAT(_sandbox.read(inHome("rcplauncher.properties")),
                AnyOf("provisioning.manifest.version=0101130000\n" + oldId,
                      "provisioning.manifest.version=0503130907\n" + oldId,
                      "provisioning.manifest.version=0101130000\nrcp.install.id=0503130907\n"));
  }

 private:
  int _status = -1;
};

// Refuses one change after the other, each in a run of its own; answers how many there were.
template <class Prepare>
std::size_t refuseEach(Prepare prepare) {
  for (std::size_t number = 1;; ++number) {
    SCOPED_TRACE(number);
    RefusedRun run;
    prepare(run);
    run.run(number);
    run.expectWholeFiles();
    if (!run.wasRefused()) return number - 1;
  }
}

TEST(RefusedChangeTest, LeavesWholeFilesWhereverAnInstallationMeetsIt) {
  proves("FILES-18");
  EXPECT_GT(refuseEach([](RefusedRun&) {}), 50U);
}

TEST(RefusedChangeTest, LeavesWholeFilesWhereverARecoveryMeetsIt) {
  proves("FILES-18");
  EXPECT_GT(refuseEach([](RefusedRun& run) { run.startApplication(); }), 20U);
}

}  // namespace
}  // namespace installer::test
