#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/FailingFileManager.h"
#include "support/FakeUserContext.h"
#include "support/TemporaryFolder.h"
#include "support/TreeSnapshot.h"

namespace installer::test {

// Accounts that a test makes up. The process's own user is known as "self".
class MadeUpUsers : public FakeUserContext {
 public:
  MadeUpUsers() {
    add({"self", ::geteuid(), ::getegid(), "/home/self"});
    groups["own"] = ::getegid();
    effectiveUser = ::geteuid();
  }
};

// The real file manager on a private folder.
class FileManagerFixture : public ::testing::Test {
 protected:
  // What is left when a test is over: never a temporary name, never an open descriptor.
  void TearDown() override {
    EXPECT_EQ(openDescriptors(), _openBefore);
    using Walk = std::filesystem::recursive_directory_iterator;
    const auto barred = std::filesystem::directory_options::skip_permission_denied;
    for (const auto& entry : Walk(_folder.path(), barred)) {
      EXPECT_FALSE(entry.path().filename().string().starts_with(".hotfix-")) << entry.path();
    }
  }

  // How many descriptors this process has open.
  static std::size_t openDescriptors() {
    std::size_t count = 0;
    for (int number = 0; number < 1024; ++number) {
      if (::fcntl(number, F_GETFD) >= 0) ++count;
    }
    return count;
  }

  std::string path(std::string_view relative) const { return _folder.path(relative); }

  struct stat statusOf(std::string_view relative) const {
    struct stat status {};
    EXPECT_EQ(::lstat(path(relative).c_str(), &status), 0) << relative;
    return status;
  }
  mode_t modeOf(std::string_view relative) const { return statusOf(relative).st_mode & 07777; }
  bool isThere(std::string_view relative) const {
    struct stat status {};
    return ::lstat(path(relative).c_str(), &status) == 0;
  }

  TreeSnapshot snapshot(std::string_view relative = "") const { return snapshotOf(path(relative)); }

  std::size_t _openBefore = openDescriptors();
  TemporaryFolder _folder{memoryFolder()};
  MadeUpUsers _users;
  FailingFileManager _files{_users};
};

// Sets the file-creation mask for a scope.
class CreationMask {
 public:
  explicit CreationMask(mode_t mask) : _previous(::umask(mask)) {}
  CreationMask(const CreationMask&) = delete;
  CreationMask& operator=(const CreationMask&) = delete;
  ~CreationMask() { ::umask(_previous); }

 private:
  mode_t _previous;
};

}  // namespace installer::test
