#include "support/ChildRecords.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace installer::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kDigits = 4;  // of the number of the start, before a dot

std::string unescaped(const std::string& text) {
  std::string result;
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (text[place] != '\\') {
      result += text[place];
      continue;
    }
    const char code = text.at(++place);
    result += code == 'n' ? '\n' : code == 't' ? '\t' : code;
  }
  return result;
}

void take(ChildRecord& record, const std::string& key, const std::string& value) {
  if (key == "executable") record.executable = value;
  if (key == "argument") record.arguments.push_back(value);
  if (key == "directory") record.directory = value;
  if (key == "descriptor") record.descriptors.push_back(value);
  if (key == "blocked") record.blocked.push_back(value);
  if (key == "ignored") record.ignored.push_back(value);
  if (key == "environment") record.environment.push_back(value);
  if (key == "user") record.user = value;
  if (key == "mask") record.mask = value;
}

ChildRecord readRecord(const fs::path& file) {
  ChildRecord record;
  record.name = file.filename().string().substr(kDigits + 1);
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t tab = line.find('\t');
    take(record, line.substr(0, tab), unescaped(line.substr(tab + 1)));
  }
  std::sort(record.descriptors.begin(), record.descriptors.end());
  return record;
}

bool isRecord(const std::string& name) {
  return name.size() > kDigits && name[kDigits] == '.' &&
         std::all_of(name.begin(), name.begin() + kDigits,
                     [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::string childHelper() {
  return std::string(HOTFIX_CHILDREN) + "/child-helper";
}

std::vector<ChildRecord> childRecords(const std::string& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder))
    if (isRecord(entry.path().filename().string())) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<ChildRecord> records;
  std::transform(files.begin(), files.end(), std::back_inserter(records), readRecord);
  return records;
}

}  // namespace installer::test
