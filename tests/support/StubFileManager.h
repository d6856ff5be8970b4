#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileManager.h"

namespace installer::test {

// A file system that only answers questions, from what the test puts into it, without a disk below
// it: for tests that ask a hundred thousand times. Everything exists; every change is refused.
class StubFileManager : public FileManager {
 public:
  std::map<std::string, std::string> contents;  // by path; any other file cannot be read
  std::vector<std::string> names;               // what every folder holds

  std::shared_ptr<const void> hold(const std::string&, const std::optional<std::string>&) override {
    return nullptr;
  }
  bool exists(const std::string&, FileError*) override { return true; }
  bool isDirectory(const std::string&) override { return true; }
  std::optional<uid_t> owner(const std::string&) override { return std::nullopt; }
  using FileManager::list;
  std::optional<std::vector<std::string>> list(const std::string&,
                                               std::string_view prefix) override {
    std::vector<std::string> listed;
    for (const std::string& name : names)
      if (name.starts_with(prefix)) listed.push_back(name);
    return listed;
  }
  std::optional<std::string> read(const std::string& path, FileError*) override {
    const auto found = contents.find(path);
    if (found == contents.end()) return std::nullopt;
    return found->second;
  }
  std::optional<std::string> readUnlinked(const std::string&, FileOrigin*, FileError*) override {
    return std::nullopt;
  }
  bool write(const std::string&, std::string_view, ReplacedFile, std::optional<mode_t>,
             FileError*) override {
    return false;
  }
  bool copy(const CopySource&, const std::string&, ExistingItem, FileError*) override {
    return false;
  }
  bool hasContent(const CopySource&) override { return true; }
  void merge(const std::string&, const std::string&, const std::string&) override {}
  bool remove(const std::string&, FileError*) override { return false; }
  void removeLeftOvers(const std::string&, LeftOvers) override {}
  bool createDirectory(const std::string&, Intermediates, const std::optional<FileAttributes>&,
                       FileError*) override {
    return false;
  }
  bool createFile(const std::string&, std::string_view, const FileAttributes&) override {
    return false;
  }
  bool flush(const std::string&, FileError*) override { return false; }
  bool mayEnter(const std::string&) override { return true; }
  bool changeAttributesBelowAll(const std::vector<std::string>&, const FileAttributes&) override {
    return false;
  }
  int openLog(const std::string&) override { return -1; }
  void closeLog(int) override {}
  LockAttempt tryLock(const std::string&, FileError*) override { return {}; }
};

}  // namespace installer::test
