#include "hotfix/instance/InstanceService.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <utility>

#include "platform/FileManager.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

// Does something whenever it is asked whom to trust.
class WatchedUsers : public FakeUserContext {
 public:
  std::function<void()> whenAsked;

  std::optional<std::string> environment(const std::string& variable) override {
    whenAsked();
    return FakeUserContext::environment(variable);
  }
};

// Somebody plants an item as soon as it was looked for.
class PlantingFiles : public FailingFileManager {
 public:
  PlantingFiles(UserContext& users, std::function<void()> plant)
      : FailingFileManager(users), _plant(std::move(plant)) {}

  std::optional<uid_t> owner(const std::string& path) override {
    const auto found = FailingFileManager::owner(path);
    _plant();
    return found;
  }
  bool copy(const CopySource& from, const std::string& to, ExistingItem existing,
            FileError* error) override {
    const bool copied = FailingFileManager::copy(from, to, existing, error);
    _plant();
    return copied;
  }

 private:
  std::function<void()> _plant;
};

class InstanceServiceTest : public InstanceFixture {
 protected:
  void nameInstallLocation(const std::string& location) {
    _sandbox.writePlist(_sandbox.paths().internalConfiguration, {{"newInstallLocation", location}});
  }
};

TEST_F(InstanceServiceTest, BindsToAnExistingHome) {
  proves("INSTANCE-1");
  const InstanceService service(home(), "/data");

  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_EQ(service.getWorkspace(), "/data");
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("6 The pathToRcphome is: " + home() + ".", "6 newInstallLocation : (null).",
                  "4 Can not copy to newInstallLocation because its nil!"));
}

TEST_F(InstanceServiceTest, ExistingHomeIsBoundWithoutATrace) {
  proves("LIBRARY-8");
  nameInstallLocation(_sandbox.path("location"));
  _sandbox.write(_sandbox.paths().stagingFolder + "file", "staged");

  const auto alone = InstanceService::existing(home());
  const auto service = InstanceService::existing(home(), "/data");

  ASSERT_TRUE(alone && service);
  EXPECT_EQ(alone->pathToRcphome(), home());
  EXPECT_EQ(alone->getWorkspace(), std::nullopt);
  EXPECT_EQ(service->getWorkspace(), "/data");
  EXPECT_FALSE(_sandbox.exists("location"));
  EXPECT_THAT(numberedLines(), ElementsAre());
}

TEST_F(InstanceServiceTest, HomeThatIsNotThereIsNotMadeForAQuestion) {
  proves("LIBRARY-8");
  _sandbox.write("file", "");

  EXPECT_FALSE(InstanceService::existing(_sandbox.path("new/rcp")));
  EXPECT_FALSE(InstanceService::existing(_sandbox.path("file"), "/data"));
  EXPECT_FALSE(InstanceService::existing(std::nullopt));

  EXPECT_FALSE(_sandbox.exists("new"));
  EXPECT_THAT(numberedLines(), ElementsAre());
}

TEST_F(InstanceServiceTest, WithoutDataFolderNoneIsKnown) {
  proves("INSTANCE-3");
  EXPECT_EQ(InstanceService(home()).getWorkspace(), std::nullopt);
}

TEST_F(InstanceServiceTest, MissingHomeIsMadeWithAllFoldersAbove) {
  proves("INSTANCE-1");
  const InstanceService service(_sandbox.path("new/a/rcp"));

  EXPECT_EQ(service.pathToRcphome(), _sandbox.path("new/a/rcp"));
  EXPECT_TRUE(_sandbox.exists("new/a/rcp"));
}

TEST_F(InstanceServiceTest, HomeThatCannotBeMadeLeavesAServiceWithoutFolders) {
  proves("INSTANCE-2");
  _sandbox.write("file", "");
  const std::string impossible = _sandbox.path("file/rcp");

  const InstanceService service(impossible, "/data");

  EXPECT_EQ(service.pathToRcphome(), std::nullopt);
  EXPECT_EQ(service.getWorkspace(), std::nullopt);
  EXPECT_THAT(_sandbox.log().back(), Says(LogLevel::error, "No file at: " + impossible + "!"));
}

TEST_F(InstanceServiceTest, AbsentHomeIsToldAsNull) {
  proves("INSTANCE-3");
  const InstanceService service(std::nullopt, "/data");

  EXPECT_EQ(service.pathToRcphome(), std::nullopt);
  EXPECT_THAT(numberedLines(),
              ElementsAre("6 The pathToRcphome is: (null).", "6 newInstallLocation : (null).",
                          "4 Can not copy to newInstallLocation because its nil!",
                          "3 No file at: (null)!"));
}

TEST_F(InstanceServiceTest, HomeThatIsAFileIsTakenAsItIs) {
  proves("INSTANCE-1");
  _sandbox.write("file", "");

  EXPECT_EQ(InstanceService(_sandbox.path("file")).pathToRcphome(), _sandbox.path("file"));
}

TEST_F(InstanceServiceTest, StagingFolderIsCopiedToTheNewLocation) {
  proves("INSTANCE-4");
  _sandbox.write("tmp/qlmcore2/sub/file", "staged");
  nameInstallLocation(_sandbox.path("new"));

  const InstanceService service(home());

  EXPECT_EQ(_sandbox.read("new/sub/file"), "staged");
  EXPECT_THAT(numberedLines(), ElementsAre("6 The pathToRcphome is: " + home() + ".",
                                           "6 newInstallLocation : " + _sandbox.path("new") + "."));
}

TEST_F(InstanceServiceTest, WhatIsInTheMakingBesideTheNewLocationIsNotLookedFor) {
  _sandbox.write("opt/.hotfix-1", "x");
  nameInstallLocation(_sandbox.path("opt/new"));

  const InstanceService service(home());

  EXPECT_TRUE(_sandbox.exists("opt/.hotfix-1")) << "a run does that, once";
}

TEST_F(InstanceServiceTest, EveryServiceCopiesTheStagingFolder) {
  proves("INSTANCE-4");
  _sandbox.write("tmp/qlmcore2/file", "staged");
  nameInstallLocation(_sandbox.path("new"));
  const InstanceService first(home());
  _sandbox.remove("new");

  const InstanceService second(home());

  EXPECT_EQ(_sandbox.read("new/file"), "staged");
}

TEST_F(InstanceServiceTest, MissingHomeIsMadeBeforeTheStagingFolderIsCopied) {
  proves("INSTANCE-5");
  _sandbox.write("tmp/qlmcore2/file", "staged");
  nameInstallLocation(_sandbox.path("new/rcp/staged"));

  const InstanceService service(_sandbox.path("new/rcp"));

  EXPECT_EQ(_sandbox.read("new/rcp/staged/file"), "staged");
  EXPECT_TRUE(linesAt(LogLevel::error).empty());
}

TEST_F(InstanceServiceTest, HomeThatComesWithTheStagingFolderIsTaken) {
  proves("INSTANCE-5");
  _sandbox.makeFolder("tmp/qlmcore2/rcp");
  _sandbox.makeLink("link", _sandbox.path("new"));  // leads nowhere, so that no folder can be made
  nameInstallLocation(_sandbox.path("new"));

  const InstanceService service(_sandbox.path("link/rcp"));

  EXPECT_EQ(service.pathToRcphome(), _sandbox.path("link/rcp"));
}

TEST_F(InstanceServiceTest, LocationThatExistsIsLeftAsItIs) {
  proves("INSTANCE-6");
  _sandbox.write("tmp/qlmcore2/file", "staged");
  _sandbox.write("new/other", "mine");
  nameInstallLocation(_sandbox.path("new"));

  const InstanceService service(home());

  EXPECT_FALSE(_sandbox.exists("new/file"));
  EXPECT_TRUE(linesAt(LogLevel::error).empty());
}

TEST_F(InstanceServiceTest, StagingFolderOfAnotherUserIsNotCopied) {
  proves("INSTANCE-8");
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  _sandbox.write("tmp/qlmcore2/file", "planted");
  ASSERT_EQ(chown(_sandbox.path("tmp/qlmcore2").c_str(), 4711, 4711), 0);
  nameInstallLocation(_sandbox.path("new"));

  const InstanceService service(home());

  EXPECT_FALSE(_sandbox.exists("new"));
  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("Error copying files: \"" + _sandbox.path("tmp/qlmcore2") +
                          "\" cannot be copied to \"" + _sandbox.path("new") +
                          "\": belongs to another user."));
}

TEST_F(InstanceServiceTest, StagingFolderThatIsExchangedWhenItsOwnerWasJudgedIsNotCopied) {
  proves("INSTANCE-8");
  _sandbox.write("tmp/qlmcore2/file", "staged");
  _sandbox.write("tmp/planted/file", "planted");
  nameInstallLocation(_sandbox.path("new"));
  WatchedUsers users;
  const auto exchange = [&] {
    std::filesystem::rename(_sandbox.path("tmp/qlmcore2"), _sandbox.path("tmp/old"));
    std::filesystem::rename(_sandbox.path("tmp/planted"), _sandbox.path("tmp/qlmcore2"));
  };
  users.effectiveUser = geteuid();
  int questions = 0;  // the first is for the configuration's owner
  users.whenAsked = [&] {
    if (++questions == 2) exchange();
  };
  UserContext* const before = std::exchange(_sandbox.platform().users, &users);

  const InstanceService service(home());

  _sandbox.platform().users = before;
  EXPECT_FALSE(_sandbox.exists("tmp/planted"));
  EXPECT_EQ(_sandbox.read("new/file"), "staged");
}

TEST_F(InstanceServiceTest, StagingFolderIsLookedForOnce) {
  proves("INSTANCE-8");
  nameInstallLocation(_sandbox.path("new"));
  PlantingFiles files(_sandbox.users(), [&] { _sandbox.write("tmp/qlmcore2/file", "planted"); });
  FileManager* const before = std::exchange(_sandbox.platform().files, &files);

  const InstanceService service(home());

  _sandbox.platform().files = before;
  EXPECT_FALSE(_sandbox.exists("new"));
}

TEST_F(InstanceServiceTest, FailedStagingCopyIsLoggedAndPassedOver) {
  proves("INSTANCE-7");
  nameInstallLocation(_sandbox.path("new"));

  const InstanceService service(home());

  EXPECT_EQ(service.pathToRcphome(), home());
  const std::string staging = _sandbox.paths().stagingFolder;
  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("Error copying files: \"" + staging + "\" cannot be copied to \"" +
                          _sandbox.path("new") + "\": No such file or directory."));
}

TEST_F(InstanceServiceTest, EmptyLocationIsOneWhereNothingCanBeCopied) {
  _sandbox.write("tmp/qlmcore2/file", "staged");
  nameInstallLocation("");

  const InstanceService service(home());

  EXPECT_EQ(service.pathToRcphome(), home());
  EXPECT_THAT(linesAt(LogLevel::error), ElementsAre(StartsWith("Error copying files: \"")));
  EXPECT_TRUE(linesAt(LogLevel::warning).empty());
}

TEST_F(InstanceServiceTest, CopiesGoOnOnlyWhereTheDestinationExists) {
  proves("INSTANCE-9");
  const InstanceService service(home());
  const auto proceeds = [&](int code) {
    return service.shouldProceedAfterError({.code = code, .description = ""}, "a", "b");
  };

  EXPECT_TRUE(proceeds(516));
  EXPECT_FALSE(proceeds(515));
  EXPECT_FALSE(proceeds(517));
  EXPECT_FALSE(proceeds(FileError::kMissing));
  EXPECT_FALSE(proceeds(FileError::kOther));
}

}  // namespace
}  // namespace installer::test
