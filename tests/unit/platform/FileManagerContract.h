#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/FileManager.h"
#include "support/FakeUserContext.h"
#include "support/TemporaryFolder.h"
#include "support/TreeSnapshot.h"

namespace installer::test {

// One implementation with the means to put a file into its one folder.
class FileManagerSubject {
 public:
  virtual ~FileManagerSubject() = default;
  virtual FileManager& files() = 0;
  virtual std::string folder() = 0;
  virtual void put(const std::string& name, const std::string& bytes) = 0;
};

struct FileManagerKind {
  std::string name;
  std::function<std::unique_ptr<FileManagerSubject>()> make;
};

// One that changes things, with a real folder: the test lays out what is there at first.
class ChangingFileManagerSubject : public FileManagerSubject {
 public:
  virtual const TemporaryFolder& disk() = 0;
  // What is there by now, below its folder, to whoever asks this file manager.
  virtual TreeSnapshot now() = 0;

  std::string folder() override { return disk().path(); }
  void put(const std::string& name, const std::string& bytes) override {
    (void)disk().makeFile(name, bytes);
  }
};

struct ChangingFileManagerKind {
  std::string name;
  std::function<std::unique_ptr<ChangingFileManagerSubject>(UserContext& users)> make;
};

// What every file manager keeps to, be it one that changes nothing.
class FileManagerContractTest : public ::testing::TestWithParam<FileManagerKind> {
 protected:
  std::string path(const std::string& name) { return _subject->folder() + "/" + name; }

  std::unique_ptr<FileManagerSubject> _subject = GetParam().make();
  FileManager& _files = _subject->files();
};

// What those keep to that do change things.
class ChangingFileManagerContractTest : public ::testing::TestWithParam<ChangingFileManagerKind> {
 protected:
  ChangingFileManagerContractTest();

  std::string path(const std::string& name) { return _disk.path(name); }
  const TreeEntry& now(const std::string& name);
  std::vector<std::string> names() { return pathsIn(_subject->now()); }
  bool copy(const CopySource& from, const std::string& to,
            ExistingItem existing = ExistingItem::fail) {
    _error = {};
    return _files.copy(from, path(to), existing, &_error);
  }
  // What the process's own user "self" gets, with the mode.
  static FileAttributes own(mode_t mode) { return {.owner = "self", .group = "own", .mode = mode}; }

  FakeUserContext _users;
  std::unique_ptr<ChangingFileManagerSubject> _subject = GetParam().make(_users);
  FileManager& _files = _subject->files();
  const TemporaryFolder& _disk = _subject->disk();
  FileError _error;
  TreeSnapshot _now;
};

}  // namespace installer::test
