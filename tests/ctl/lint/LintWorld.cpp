#include "ctl/lint/LintWorld.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace installer::ctl::lint::test {

namespace {

std::string attribute(const std::string& name, const std::string& value) {
  return value.empty() ? "" : " " + name + "=\"" + value + "\"";
}

std::string listOf(const std::vector<std::pair<std::string, std::string>>& entries) {
  std::string list =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
  for (const auto& [key, element] : entries)
    list += "\t<key>" + key + "</key>\n\t" + element + "\n";
  return list + "</dict>\n</plist>\n";
}

std::vector<std::pair<std::string, std::string>> plainDescription(const std::string& version) {
  return {{"bundleName", "<string>Quillmere</string>"},
          {"allowMultiInstance", "<true/>"},
          {"frameworkPath", "<string>Contents/MacOS</string>"},
          {"version", "<string>" + version + "</string>"}};
}

}  // namespace

std::string manifestOf(const std::vector<Feature>& features) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<manifest>\n<domain-object>\n<object-data>\n"
      "<install>\n<installfeature id=\"com.kiv.fix\">\n<requirements>\n";
  for (const Feature& feature : features)
    text += "<feature" + attribute("id", feature.id) + attribute("version", feature.version) +
            attribute("url", feature.url) + attribute("action", feature.action) + "/>\n";
  return text +
         "</requirements>\n</installfeature>\n</install>\n</object-data>\n</domain-object>\n"
         "</manifest>\n";
}

LintWorld::LintWorld(std::string root)
    : _root(std::move(root)), _description(plainDescription("1.5")) {
  writePackage("/Volumes/HF", "1.5");
  writePackage("/Volumes/Old", "1.4");
}

void LintWorld::writePackage(const std::string& folder, const std::string& version) const {
  const std::string made = folder + "/mac/Fix.pkg/Contents/";
  const std::string brought = folder + "/mac/deploy/";
  const std::string site = folder + "/updates/platform/";
  const std::string entry = "com.kiv.fix_" + version;
  write(made + "Resources/hotfix.plist", listOf(plainDescription(version)));
  write(made + "Info.plist",
        listOf({{"CFBundleIdentifier", "<string>com.kiv.hotfix</string>"},
                {"CFBundleShortVersionString", "<string>" + version + "</string>"}}));
  write(brought + "install.hotfix.xml", manifestOf({{.version = version}}));
  write(brought + "uninstall.hotfix.xml",
        manifestOf({{.version = version, .url = "", .action = "uninstall"}}));
  write(brought + "plugin_customization.ini", "com.kiv.ui/greeting=Hello\n");
  write(brought + ".keystore", "new key\n");
  write(brought + "extras/readme.txt", "read me\n");
  write(site + "features/" + entry + "/feature.xml",
        "<feature id=\"com.kiv.fix\"><plugin id=\"com.kiv.fix\" version=\"" + version +
            "\"/></feature>\n");
  write(site + "plugins/" + entry + "/META-INF/MANIFEST.MF", "Manifest-Version: 1.0\n");
}

void LintWorld::makeInstance() const {
  write(home("deploy/install.xml"), "<manifest/>\n");
  write(home("deploy/.keystore"), "old key\n");
}

Request LintWorld::request() const {
  const auto whole = [&](const std::optional<std::string>& below) {
    return below ? std::optional(path(*below)) : std::nullopt;
  };
  return {path(package), whole(instance), whole(older), {}};
}

// --- The description -----------------------------------------------------------------------------

LintWorld& LintWorld::set(const std::string& key, const std::string& element) {
  const auto entry = std::find_if(_description.begin(), _description.end(),
                                  [&](const auto& one) { return one.first == key; });
  if (entry == _description.end()) return add(key, element);
  entry->second = element;
  writeDescription();
  return *this;
}

LintWorld& LintWorld::add(const std::string& key, const std::string& element) {
  _description.emplace_back(key, element);
  writeDescription();
  return *this;
}

LintWorld& LintWorld::unset(const std::string& key) {
  std::erase_if(_description, [&](const auto& entry) { return entry.first == key; });
  writeDescription();
  return *this;
}

void LintWorld::writeDescription() const {
  write(package + "/Contents/Resources/hotfix.plist", listOf(_description));
}

// --- Files ---------------------------------------------------------------------------------------

void LintWorld::write(const std::string& below, std::string_view bytes) const {
  const fs::path file = path(below);
  fs::create_directories(file.parent_path());
  fs::remove(file);
  std::ofstream(file, std::ios::binary) << bytes;
}

std::string LintWorld::read(const std::string& below) const {
  std::ifstream in(path(below), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void LintWorld::replace(const std::string& below, std::string_view words,
                        std::string_view others) const {
  std::string text = read(below);
  const std::size_t place = text.find(words);
  ASSERT_NE(std::string::npos, place) << words << " is not in " << below;
  write(below, text.replace(place, words.size(), others));
}

void LintWorld::remove(const std::string& below) const {
  ASSERT_GT(fs::remove_all(path(below)), 0U) << below << " was not there";
}

void LintWorld::move(const std::string& from, const std::string& to) const {
  fs::create_directories(fs::path(path(to)).parent_path());
  fs::rename(path(from), path(to));
}

void LintWorld::makeFolder(const std::string& below) const {
  fs::create_directories(path(below));
}

void LintWorld::makeLink(const std::string& below, const std::string& target) const {
  fs::create_directories(fs::path(path(below)).parent_path());
  fs::remove(path(below));
  fs::create_symlink(target, path(below));
}

void LintWorld::makePipe(const std::string& below) const {
  fs::create_directories(fs::path(path(below)).parent_path());
  fs::remove(path(below));
  ASSERT_EQ(0, mkfifo(path(below).c_str(), 0644));
}

void LintWorld::resize(const std::string& below, std::size_t size) const {
  fs::resize_file(path(below), size);
}

}  // namespace installer::ctl::lint::test
