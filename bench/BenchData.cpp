#include "BenchData.h"

#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>

#include "MadeData.h"

namespace installer::bench {
namespace {

namespace fs = std::filesystem;

fs::path temporaryFolder() {
  std::string folder = fs::temp_directory_path() / "hotfix-bench-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder " + folder);
  return folder;
}

std::optional<int> numberBetween(std::string_view name, std::string_view prefix,
                                 std::string_view suffix) {
  if (!name.starts_with(prefix) || !name.ends_with(suffix)) return std::nullopt;
  if (name.size() <= prefix.size() + suffix.size()) return std::nullopt;
  name.remove_prefix(prefix.size());
  name.remove_suffix(suffix.size());
  int number = 0;
  const char* end = name.data() + name.size();
  const auto read = std::from_chars(name.data(), end, number);
  if (read.ptr != end) return std::nullopt;
  return number;
}

}  // namespace

BenchData::BenchData() {
  const char* data = std::getenv("PEERS_DATA");
  const char* live = std::getenv("PEERS_LIVE");
  if (data != nullptr && live != nullptr) {
    _data = data;
    _live = live;
    return;
  }
  _root = temporaryFolder();
  _data = _root / "data";
  _live = _root / "live";
  fs::create_directories(_live);
  makeData(_data, smallSizes());
}

BenchData::~BenchData() {
  std::error_code ignored;  // nothing is lost with what stays in a temporary folder
  if (own()) fs::remove_all(_root, ignored);
}

std::vector<int> BenchData::sizes(const char* folder, std::string_view prefix,
                                  std::string_view suffix) const {
  std::vector<int> numbers;
  std::error_code missing;
  for (const auto& entry : fs::directory_iterator(_data / folder, missing))
    if (const auto number = numberBetween(entry.path().filename().string(), prefix, suffix))
      numbers.push_back(*number);
  std::ranges::sort(numbers);
  return numbers;
}

}  // namespace installer::bench
