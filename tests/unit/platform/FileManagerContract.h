#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/FileManager.h"

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

// What every file manager keeps to, be it one that changes nothing.
class FileManagerContractTest : public ::testing::TestWithParam<FileManagerKind> {
 protected:
  std::string path(const std::string& name) { return _subject->folder() + "/" + name; }

  std::unique_ptr<FileManagerSubject> _subject = GetParam().make();
  FileManager& _files = _subject->files();
};

// What those keep to that do change the disk.
class ChangingFileManagerContractTest : public FileManagerContractTest {};

}  // namespace installer::test
