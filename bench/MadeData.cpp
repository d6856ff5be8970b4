#include "MadeData.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string>

namespace installer::bench {
namespace {

namespace fs = std::filesystem;

void writeFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string properties(int count) {
  std::string text;
  for (int number = 0; number < count; ++number) {
    if (number % 50 == 0) text += fmt::format("# section {}\n", number / 50);
    text += fmt::format("com.example.plugin{:04}/pref.theme.{}=http\\://host{}.example.org/a b\n",
                        number % 977, number, number % 100);
  }
  return text;
}

// Half of the entries are keys of the file with `count` entries.
std::string mergedProperties(int count) {
  std::string text;
  for (int number = 0; number < count / 20; ++number)
    text += fmt::format("com.example.plugin{:04}/pref.theme.{}=merged\n", number * 3 % 977,
                        number * 3) +
            fmt::format("com.example.hotfix/pref.theme.{}=merged\n", number);
  return text;
}

std::string propertyList(int count) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\">\n<dict>\n";
  for (int number = 1; number < count; ++number)
    text += fmt::format("\t<key>key.{0}</key>\n\t<string>/Applications/a &amp; b {0}</string>\n",
                        number);
  return text + "\t<key>hotfixVersion</key>\n\t<string>1.0.0</string>\n</dict>\n</plist>\n";
}

std::string manifest(int count) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<provisioning-manifest><domain-object "
      "name=\"platform\"><object-data><install>\n<installfeature id=\"group\"><requirements>\n";
  for (int number = 0; number < count; ++number)
    text += fmt::format(
        "<feature id=\"com.example.feature.{0}\" version=\"6.2.{0}\" match=\"perfect\" "
        "action=\"install\" url=\"${{installer.root}}/updates/platform/{0}.jar\"/>\n",
        number);
  return text +
         "</requirements></installfeature>\n</install></object-data></domain-object>"
         "</provisioning-manifest>\n";
}

void makeProperties(const fs::path& folder, int count) {
  const std::string file = folder / std::to_string(count);
  writeFile(file + ".properties", properties(count));
  writeFile(file + ".merge.properties", mergedProperties(count));
}

void makePropertyList(const fs::path& folder, int count) {
  writeFile(folder / fmt::format("{}.xml.plist", count), propertyList(count));
}

void makeManifest(const fs::path& folder, int count) {
  writeFile(folder / fmt::format("{}.xml", count), manifest(count));
}

void makeFiles(const fs::path& root, int files, int inOneFolder, std::size_t bytes) {
  for (int number = 0; number < files; ++number)
    writeFile(
        root / fmt::format("d{:03}", number / inOneFolder) / fmt::format("f{:06}.dat", number),
        std::string(bytes, static_cast<char>('a' + number % 26)));
}

void makeTree(const fs::path& folder, int count) {
  makeFiles(folder / std::to_string(count), count, 100, 4000);
}

void makeBigFiles(const fs::path& folder, int megabytes) {
  makeFiles(folder / fmt::format("20x{}", megabytes), 20, 100, std::size_t(megabytes) << 20);
}

// Of a hundred and one entries one is a folder.
void makeAttributes(const fs::path& folder, int count) {
  makeFiles(folder / std::to_string(count), count / 101 * 100, 100, 0);
}

void makeWideFolder(const fs::path& folder, int count) {
  makeFiles(folder / std::to_string(count), count, count, 0);
}

void makeDeepTree(const fs::path& folder, int levels) {
  fs::path path = folder / std::to_string(levels);
  fs::create_directories(path);
  for (int level = 0; level < levels; ++level) fs::create_directory(path /= "d");
}

// An rcp home.
void makePlugins(const fs::path& folder, int count) {
  const fs::path plugins = folder / std::to_string(count) / "eclipse/plugins";
  for (int number = 0; number < count; ++number)
    fs::create_directories(plugins /
                           fmt::format("com.example.plugin{}_6.2.{}", number, number % 9));
  fs::create_directories(plugins / "com.kiv.rcp.base_6.2.1");
}

const std::map<std::string, void (*)(const fs::path&, int), std::less<>> kMakers = {
    {"props", makeProperties}, {"plist", makePropertyList}, {"manifest", makeManifest},
    {"tree", makeTree},        {"big", makeBigFiles},       {"attrs", makeAttributes},
    {"wide", makeWideFolder},  {"deep", makeDeepTree},      {"plugins", makePlugins},
};

}  // namespace

DataSizes smallSizes() {
  return {{"props", {1000, 100'000}},
          {"plist", {20, 10'000}},
          {"manifest", {10'000}},
          {"tree", {2000}},
          {"big", {2}},
          {"attrs", {5050}},
          {"wide", {5000}},
          {"deep", {1000}},
          {"plugins", {5000}}};
}

bool takeSizes(std::string_view text, DataSizes& sizes) {
  const std::size_t equal = text.find('=');
  if (equal == text.npos || !kMakers.contains(text.substr(0, equal))) return false;
  std::vector<int>& numbers = sizes[std::string(text.substr(0, equal))];
  for (text.remove_prefix(equal); !text.empty();) {
    text.remove_prefix(1);  // the "=" or a ","
    int number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || number <= 0) return false;
    numbers.push_back(number);
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    if (!text.empty() && text.front() != ',') return false;
  }
  return true;
}

void makeData(const fs::path& data, const DataSizes& sizes) {
  for (const auto& [kind, numbers] : sizes)
    for (const int number : numbers) kMakers.at(kind)(data / kind, number);
}

}  // namespace installer::bench
