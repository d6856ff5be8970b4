#include "platform/overlay/OverlayFileManager.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/ChildRun.h"
#include "support/FakeUserContext.h"
#include "support/OverlayMaker.h"
#include "support/OverlaySnapshot.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr uid_t kNobody = 65534;

class OverlayFileManagerTest : public ::testing::Test {
 protected:
  std::string path(std::string_view name) const { return _disk.path(name); }

  TemporaryFolder _disk;
  FakeUserContext _users;
  overlay::OverlayFileManager _files{_users, {.user = 12, .group = 34, .mask = 027}};
};

TEST_F(OverlayFileManagerTest, NewItemsAreTheMakersLessTheMask) {
  EXPECT_TRUE(_files.write(path("file"), ""));
  EXPECT_TRUE(_files.createDirectory(path("folder"), Intermediates::refuse));

  const TreeSnapshot now = snapshotOf(_files.tree(), _disk.path());
  EXPECT_EQ(now.at("file").owner, 12u);
  EXPECT_EQ(now.at("file").mode, 0640u);
  EXPECT_EQ(now.at("folder").owner, 12u);
  EXPECT_EQ(now.at("folder").mode, 0750u);
  EXPECT_THAT(pathsIn(snapshotOf(_disk.path())), IsEmpty());
}

// A file of a terabyte, most of which is on no medium.
TEST_F(OverlayFileManagerTest, ACopyCostsNothingForTheBytesOfAFile) {
  _disk.makeFile("tree/large", "begins");
  const std::string large = path("tree/large");
  ASSERT_EQ(::truncate(large.c_str(), off_t{1} << 40), 0);

  EXPECT_TRUE(_files.copy(path("tree"), path("copy"), ExistingItem::fail));

  FileError error;
  EXPECT_TRUE(_files.exists(path("copy/large")));
  EXPECT_EQ(_files.read(path("copy/large"), &error), std::nullopt);
  EXPECT_EQ(error.code, FileError::kOther);
}

TEST_F(OverlayFileManagerTest, WhatIsClosedToUsIsNoted) {
  if (::geteuid() != 0) GTEST_SKIP() << "takes the rights of root away";
  _disk.makeFile("closed/file", "secret");
  _disk.makeFile("secret", "secret", 0600);
  _disk.makeFile("open", "bytes");
  ASSERT_EQ(::chmod(path("closed").c_str(), 0700), 0);
  ASSERT_EQ(::chmod(_disk.path().c_str(), 0755), 0);
  ASSERT_EQ(::seteuid(kNobody), 0);

  EXPECT_EQ(_files.read(path("open")), "bytes");
  EXPECT_EQ(_files.read(path("none")), std::nullopt);
  EXPECT_THAT(_files.unknown(), IsEmpty());
  EXPECT_EQ(_files.read(path("secret")), std::nullopt);
  EXPECT_FALSE(_files.exists(path("closed/file")));
  EXPECT_EQ(_files.list(path("closed"), ""), std::nullopt);
  EXPECT_TRUE(_files.copy(path("secret"), path("copy"), ExistingItem::fail));

  ASSERT_EQ(::seteuid(0), 0);
  EXPECT_THAT(_files.unknown(), ElementsAre(path("closed"), path("closed/file"), path("secret")));
  EXPECT_EQ(_files.read(path("copy")), "secret");
}

TEST_F(OverlayFileManagerTest, AnAbsolutePathAsksNothingOfTheWorkingFolder) {
  if (::geteuid() != 0) GTEST_SKIP() << "takes the rights of root away";
  _disk.makeFile("open/file", "bytes");
  _disk.makeFolder("closed/working");
  ASSERT_EQ(::chmod(path("closed").c_str(), 0700), 0);
  ASSERT_EQ(::chmod(_disk.path().c_str(), 0755), 0);

  EXPECT_TRUE(inChild([&] {
    if (::chdir(path("closed/working").c_str()) != 0 || ::seteuid(kNobody) != 0) return false;
    const auto held = _files.hold(path("open"), std::nullopt);
    const bool isSeen = _files.read(path("open/file")) == "bytes" && _files.unknown().empty();
    // Back again, so that what measures the run can write its findings.
    return ::seteuid(0) == 0 && isSeen;
  }));
}

TEST_F(OverlayFileManagerTest, ALockIsNeitherTakenNorWaitedFor) {
  const int folder = ::open(_disk.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(::flock(folder, LOCK_EX | LOCK_NB), 0);

  const LockAttempt attempt = _files.tryLock(_disk.path());

  EXPECT_FALSE(attempt.busy);
  EXPECT_NE(attempt.hold, nullptr);
  ASSERT_EQ(::flock(folder, LOCK_UN), 0);
  const int other = ::open(_disk.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0) << "it is free while the answer lives";
  EXPECT_EQ(::close(other), 0);
  EXPECT_EQ(::close(folder), 0);
}

TEST_F(OverlayFileManagerTest, ALogGoesNowhere) {
  const int log = _files.openLog(path("log"));
  EXPECT_EQ(::write(log, "line\n", 5), 5);
  _files.closeLog(log);

  EXPECT_EQ(::fcntl(log, F_GETFD), -1);
  EXPECT_EQ(_files.read(path("log")), "");
  EXPECT_THAT(pathsIn(snapshotOf(_disk.path())), IsEmpty());
}

// Whoever looks twice sees the same, be the disk changed meanwhile.
TEST_F(OverlayFileManagerTest, WhatWasSeenStays) {
  _disk.makeFile("seen");
  EXPECT_THAT(_files.list(_disk.path(), ""), Optional(ElementsAre("seen")));

  _disk.makeFile("later");

  EXPECT_THAT(_files.list(_disk.path(), ""), Optional(ElementsAre("seen")));
}

TEST_F(OverlayFileManagerTest, APathThatIsTooLongIsRefusedAsByTheSystem) {
  FileError error;
  EXPECT_FALSE(_files.write(path(std::string(256, 'x')), "", ReplacedFile::takeOver, {}, &error));
  EXPECT_THAT(error.description, ::testing::HasSubstr("File name too long"));
  EXPECT_FALSE(_files.exists("/" + std::string(5000, '/'), &error));
  EXPECT_EQ(error.code, FileError::kOther);
  EXPECT_TRUE(_files.write(path(std::string(255, 'x')), ""));
}

}  // namespace
}  // namespace installer::test
