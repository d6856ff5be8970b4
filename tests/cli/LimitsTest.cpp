#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using test::ChildScript;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// What the machine does not give, and trees and launchers that nobody planned.
class LimitsTest : public InstallerTest {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    writeInfo({{"version", ListValue::string("6.0")}});
  }

  RunResult installWithin(int kind, std::uint64_t most, RunOptions options = {}) {
    options.limits[kind] = most;
    return install(options);
  }
  // Whatever the answer is: no temporary name, and files that can be read as what they are.
  void expectWhole() const {
    EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty());
    EXPECT_EQ("dict", listAt(_instance.info()).kind);
    EXPECT_THAT(*_sandbox.readFile(_instance.launcherProperties()),
                HasSubstr("provisioning.manifest.version="));
  }
  // Whether the file could be made one that even root cannot change, or an ordinary one again.
  bool setImmutable(const std::string& path, bool immutable) const {
    const int file = open(_sandbox.host(path).c_str(), O_RDONLY | O_CLOEXEC);
    int flags = 0;
    bool done = ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    done = done && ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
    close(file);
    return done;
  }
};

// --- Disks ---------------------------------------------------------------------------------------

TEST_F(LimitsTest, InstanceOnAReadOnlyDiskStaysAsItIs) {
  proves("FILES-19");
  const auto before = _sandbox.tree(_instance.bundle);
  _sandbox.makeReadOnly(_instance.bundle);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(before, _sandbox.tree(_instance.bundle));
  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_THAT(_sandbox.texts("Error"), Contains(HasSubstr("Read-only file system")));
}

TEST_F(LimitsTest, ImmutableFilesStayAndTheRecordsIsTold) {
  proves("FILES-21");
  if (!setImmutable(_instance.info(), true)) GTEST_SKIP() << "this file system has no such files";
  setImmutable(_instance.customization(), true);
  const auto info = _sandbox.readFile(_instance.info());
  const auto customization = _sandbox.readFile(_instance.customization());

  EXPECT_EQ(0, install().status);

  EXPECT_EQ(info, _sandbox.readFile(_instance.info()));
  EXPECT_EQ(customization, _sandbox.readFile(_instance.customization()));
  EXPECT_THAT(_sandbox.texts("Error"),
              Contains("\"" + _instance.info() + "\" cannot be written: Operation not permitted"));
  EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty());
  setImmutable(_instance.info(), false);
  setImmutable(_instance.customization(), false);
}

TEST_F(LimitsTest, DiskWithoutRoomForAnotherNameLeavesFilesWhole) {
  proves("FILES-19");
  _sandbox.remove(_instance.bundle);
  _sandbox.makeFolder(_instance.bundle);
  _sandbox.limitEntries(_instance.bundle, 64);
  buildInstance(_instance);
  writeInfo({{"version", ListValue::string("6.0")}});
  for (int number = 0; number < 64; ++number) {
    const std::string filler = _sandbox.host(_instance.bundle + "/" + std::to_string(number));
    if (mkdir(filler.c_str(), 0755) != 0) break;
  }

  EXPECT_EQ(1, install().status);

  expectWhole();
  EXPECT_THAT(_sandbox.texts("Error"), Contains(HasSubstr("No space left on device")));
}

// --- What a process may have ---------------------------------------------------------------------

TEST_F(LimitsTest, FewOpenFilesAreAFailureAtMost) {
  proves("FILES-17");
  int successes = 0;
  for (int most = 6; most <= 24; ++most) {
    const RunResult result = installWithin(RLIMIT_NOFILE, static_cast<std::uint64_t>(most));
    EXPECT_THAT(result.status, AnyOf(0, 1, 127)) << most;  // 127: no library could be loaded
    if (result.status == 0) ++successes;
    expectWhole();
  }
  EXPECT_GT(successes, 0);
}

TEST_F(LimitsTest, LittleAddressSpaceIsAFailureAtMost) {
  proves("MEMORY-1");
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer takes much more for itself";
#endif
  constexpr std::uint64_t kMegabyte = 1 << 20;
  for (std::uint64_t most = 24; most <= 128; most += 4) {
    const RunResult result = installWithin(RLIMIT_AS, most * kMegabyte);
    EXPECT_THAT(result.status, AnyOf(0, 1, 127)) << most << "\n" << result.err;
    expectWhole();
  }
}

TEST_F(LimitsTest, NoProcessToHaveIsALauncherThatCannotBeStarted) {
  proves("CHILD-6");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs another user";
  RunOptions options;
  options.user = CliSandbox::kAlice;
  for (const auto& [path, entry] : _sandbox.tree(_instance.bundle))
    _sandbox.giveTo(_instance.bundle + path, CliSandbox::kAlice, CliSandbox::kAlice);
  _sandbox.giveTo(_instance.bundle, CliSandbox::kAlice, CliSandbox::kAlice);

  EXPECT_EQ(1, installWithin(RLIMIT_NPROC, 1, options).status);

  EXPECT_THAT(_sandbox.texts("Error"), Contains(HasSubstr("Resource temporarily unavailable")));
  expectWhole();
}

TEST_F(LimitsTest, SignalsThatAreIgnoredOrBlockedChangeNothing) {
  proves("ODD-7");
  std::vector<int> all;
  for (int number = 1; number <= SIGRTMAX; ++number) {
    if (number != SIGKILL && number != SIGSTOP && (number < 32 || number >= SIGRTMIN))
      all.push_back(number);
  }
  RunOptions ignored;
  ignored.ignoredSignals = all;
  RunOptions blocked;
  blocked.blockedSignals = all;

  EXPECT_EQ(0, install(ignored).status);
  EXPECT_EQ(0, install(blocked).status);

  for (const auto& child : _sandbox.children("rcplauncher"))
    EXPECT_THAT(child.blockedSignals, IsEmpty());
}

// --- Packages and instances in odd places --------------------------------------------------------

TEST_F(LimitsTest, PackageInsideTheApplicationIsInstalled) {
  proves("ODD-10");
  _package.folder = _instance.bundle + "/Contents/hotfix/Fix.pkg";
  buildPackage(_package);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(LimitsTest, ApplicationInsideThePackageIsInstalledInto) {
  proves("ODD-10");
  _destination = _package.folder + "/Applications";
  _instance.bundle = _destination + "/Quillmere.app";
  buildInstance(_instance);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(LimitsTest, ExtrasThatHoldTheInstanceEnd) {
  proves("ODD-10");
  for (const std::string& extras : {_instance.home(), _instance.bundle,
                                    std::string("/Applications"), _instance.home() + "/deploy"}) {
    _package.set("extras", extras);
    writePreferences();

    EXPECT_THAT(install().status, AnyOf(0, 1)) << extras;

    expectWhole();
  }
}

TEST_F(LimitsTest, PackageThatIsMovedAwayDuringTheRunIsInstalledAllTheSame) {
  proves("FILES-23");
  _sandbox.script("rcplauncher", 1,
                  ChildScript()
                      .write(_instance.result(), "rc=0\n")
                      .rename(_package.folder, _package.folder + ".gone")
                      .rename(_package.deployFile(""), "/Volumes/HF/gone"));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ(kUninstallManifest, _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
}

TEST_F(LimitsTest, ManifestThatGoesDuringTheRunIsCodeFour) {
  proves("ODD-10");
  _sandbox.script("rcplauncher", 1,
                  ChildScript()
                      .write(_instance.result(), "rc=0\n")
                      .remove(_package.deployFile("install.hotfix.xml")));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{4, {_package.deploy("install.hotfix.xml")}}), errorRecord());
}

TEST_F(LimitsTest, ALargeInstanceIsHandedOverWhole) {
  proves("RIGHTS-1");
  constexpr int kEntries = 100'000;
  const auto entry = [&](int number) {
    return _sandbox.host(_instance.home() + "/plugins/" + std::to_string(number));
  };
  _sandbox.makeFolder(_instance.home() + "/plugins");
  for (int number = 0; number < kEntries; ++number)
    ASSERT_EQ(0, mkdir(entry(number).c_str(), 0700));

  EXPECT_EQ(0, install().status);

  for (int number = 0; number < kEntries; ++number) {
    struct stat status {};
    ASSERT_EQ(0, lstat(entry(number).c_str(), &status));
    ASSERT_EQ(0775u, status.st_mode & 07777) << number;
    ASSERT_EQ(CliSandbox::kAlice, status.st_uid) << number;
  }
}

// --- Launchers -----------------------------------------------------------------------------------

TEST_F(LimitsTest, WhatALauncherLeavesRunningIsNotWaitedFor) {
  proves("CHILD-10");
  _sandbox.makePipe("/tmp/never");
  _sandbox.writeFile(_instance.launcher(),
                     "#!/bin/sh\n(read line < /tmp/never) > /dev/null 2>&1 &\n"
                     "echo rc=0 > " +
                         _instance.result() + "\n",
                     0755);

  EXPECT_EQ(0, install().status);
}

TEST_F(LimitsTest, LauncherThatRewritesTheInstanceIsSurvived) {
  proves("ODD-10");
  _sandbox.script("rcplauncher", 2,
                  ChildScript()
                      .write(_instance.result(), "rc=0\n")
                      .write(_instance.info(), "half <dict>")
                      .write(_instance.launcherProperties(), std::string(1 << 16, '\\'))
                      .remove(_instance.deploy("install.xml"))
                      .rename(_instance.home() + "/deploy", _instance.home() + "/gone")
                      .write(_instance.home() + "/deploy", "a file"));

  EXPECT_THAT(install().status, AnyOf(0, 1));

  EXPECT_EQ("half <dict>", _sandbox.readFile(_instance.info()));
  EXPECT_THAT(_sandbox.texts("Error"),
              Contains(HasSubstr("\"" + _instance.info() + "\" cannot be read")));
}

}  // namespace
}  // namespace installer::cli
