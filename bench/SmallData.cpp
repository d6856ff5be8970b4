#include "SmallData.h"

#include <fmt/format.h>

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

// A hundred files to a folder.
void makeTree(const fs::path& root, int files, std::size_t bytes) {
  for (int number = 0; number < files; ++number)
    writeFile(root / fmt::format("d{:03}", number / 100) / fmt::format("f{:06}.dat", number),
              std::string(bytes, static_cast<char>('a' + number % 26)));
}

}  // namespace

void makeSmallData(const fs::path& data) {
  for (const int count : {1000, 100'000}) {
    const fs::path file = data / "props" / std::to_string(count);
    writeFile(file.string() + ".properties", properties(count));
    writeFile(file.string() + ".merge.properties", mergedProperties(count));
  }
  for (const int count : {20, 10'000})
    writeFile(data / "plist" / fmt::format("{}.xml.plist", count), propertyList(count));
  writeFile(data / "manifest/10000.xml", manifest(10'000));
  makeTree(data / "tree/2000", 2000, 4000);
  makeTree(data / "big/20x2", 20, std::size_t{2} << 20);
  // 5,000 files and the 50 folders that hold them.
  makeTree(data / "attrs/5050", 5000, 0);
}

}  // namespace installer::bench
