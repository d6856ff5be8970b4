#include "support/ChildFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace installer::test {
namespace {

namespace fs = std::filesystem;

void store(const std::string& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  stream.close();
  EXPECT_FALSE(stream.fail()) << file;
}

void openToAll(const std::string& path) {
  const mode_t mode = fs::is_directory(path) ? 0777 : 0666;
  EXPECT_EQ(chmod(path.c_str(), mode), 0) << path;
}

}  // namespace

std::string recordedChild() {
  return std::string(HOTFIX_CHILDREN) + "/RecordedChild";
}

ChildFolder::ChildFolder(std::string path) : _path(std::move(path)) {
  fs::create_directories(_path + "/scripts");
  fs::create_directories(_path + "/records");
  store(_path + "/lock", "");
  openToAll(_path + "/records");
  openToAll(_path + "/lock");
}

void ChildFolder::script(const std::string& role, const std::string& text) const {
  store(_path + "/scripts/" + role, text);
}

void ChildFolder::script(const std::string& role, int start, const std::string& text) const {
  script(role + "." + std::to_string(start), text);
}

std::vector<std::string> ChildFolder::recordFiles() const {
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(_path + "/records"))
    if (!entry.path().filename().string().starts_with('.')) files.push_back(entry.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<ChildRecord> ChildFolder::records() const {
  std::vector<ChildRecord> records;
  for (const std::string& file : recordFiles()) {
    std::ifstream stream(file, std::ios::binary);
    records.push_back(ChildRecord::parse({std::istreambuf_iterator<char>(stream), {}}));
  }
  return records;
}

std::vector<ChildRecord> ChildFolder::records(const std::string& role) const {
  std::vector<ChildRecord> chosen = records();
  std::erase_if(chosen, [&](const ChildRecord& record) { return record.role != role; });
  return chosen;
}

void ChildFolder::forget() const {
  for (const std::string& file : recordFiles()) fs::remove(file);
}

}  // namespace installer::test
