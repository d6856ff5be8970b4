#include "cli/Fixtures.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <ostream>
#include <sstream>

namespace installer::cli {

Package& Package::set(const std::string& key, ListValue value) {
  for (auto& [name, stored] : preferences) {
    if (name != key) continue;
    stored = std::move(value);
    return *this;
  }
  preferences.emplace_back(key, std::move(value));
  return *this;
}

Package& Package::unset(const std::string& key) {
  std::erase_if(preferences, [&key](const auto& entry) { return entry.first == key; });
  return *this;
}

void PrintTo(const ErrorRecord& record, std::ostream* stream) {
  *stream << record.code << " [";
  for (const std::string& detail : record.details) *stream << detail << ", ";
  *stream << "]";
}

void InstallerTest::SetUp() {
  const auto refusal = CliSandbox::refusal();
  ASSERT_FALSE(refusal.has_value()) << *refusal;
  buildInstance(_instance);
  buildPackage(_package);
}

void InstallerTest::buildInstance(const Instance& instance) {
  const CliSandbox& box = _sandbox;
  box.writeFile(
      instance.bundle + "/Contents/Info.plist",
      xmlList(ListValue::dictionary({{"CFBundleIdentifier", ListValue::string("com.kiv.quillmere")},
                                     {"CFBundleShortVersionString", ListValue::string("8.5.2")}})));
  box.installChild(instance.launcher());
  box.script("rcplauncher", ChildScript().write(instance.result(), "rc=0\n"));
  box.writeFile(instance.launcherProperties(),
                "# launcher\nprovisioning.manifest.version=0101200000\nrcp.install.id=0101200000\n"
                "rcp.data=${env.HOME}/workspace\n");
  box.writeFile(instance.installProperties(), "rcp.install.id=0101200000\n");
  box.writeFile(instance.deploy("install.xml"), kInstanceManifest);
  box.writeFile(instance.customization(), "a=1\nb=2\n");
  box.writeFile(instance.deploy(".keystore"), "old key\n");
  box.makeFolder(instance.home() + "/eclipse/plugins/com.kiv.rcp.base_6.2.3");
  box.writeFile(instance.shared() + "/lib.txt", "shared\n");
  box.writeFile(instance.tool(), "jar\n");
}

void InstallerTest::buildPackage(const Package& package) {
  const CliSandbox& box = _sandbox;
  box.writeFile(package.list(), xmlList(ListValue::dictionary(package.preferences)));
  box.writeFile(package.folder + "/Contents/Info.plist",
                xmlList(ListValue::dictionary(
                    {{"CFBundleIdentifier", ListValue::string("com.kiv.hotfix.fifteen")}})));
  box.writeFile(package.deployFile("install.hotfix.xml"), kSimpleManifest);
  box.writeFile(package.deployFile("uninstall.hotfix.xml"), kUninstallManifest);
  box.writeFile(package.deployFile("plugin_customization.ini"), "b=3\nc=4\n");
  box.writeFile(package.deployFile(".keystore"), "new key\n");
  box.writeFile(package.deployFile("extras/readme.txt"), "extra\n");
}

void InstallerTest::writePreferences() {
  _sandbox.writeFile(_package.list(), xmlList(ListValue::dictionary(_package.preferences)));
}

void InstallerTest::writeInfo(std::vector<std::pair<std::string, ListValue>> entries) {
  _sandbox.writeFile(_instance.info(), xmlList(ListValue::dictionary(std::move(entries))));
}

void InstallerTest::recordHotfix(const std::string& version) {
  writeInfo({{"version", ListValue::string("8.5.2")},
             {"hotfixVersion", ListValue::string(version)},
             {"SKIPRUNNINGCHECK", ListValue::string("false")},
             {"installedHotfixBundleID", ListValue::string("com.kiv.hotfix.old")}});
  _sandbox.writeFile(_instance.deploy("uninstall.hotfix.xml"), kUninstallManifest);
}

void InstallerTest::installJava() {
  _sandbox.installChild("/java/bin/java");
  _sandbox.installChild("/usr/libexec/java_home");
  _sandbox.script("java_home", ChildScript().print("/java\n"));
}

void InstallerTest::registerProduct(const std::string& name, const ListValue& list) {
  _sandbox.writeFile("/Library/Application Support/Velna/" + name + "/framework.plist",
                     xmlList(list));
}

RunResult InstallerTest::install(const RunOptions& options) {
  return _sandbox.run({_package.folder, _destination}, options);
}

RunResult InstallerTest::installWithData(const std::string& data, const RunOptions& options) {
  return _sandbox.run({_package.folder, _destination, "-rcpdata", data}, options);
}

ErrorRecord InstallerTest::errorRecord() const {
  const ListValue list = listAt(kPasteboard);
  const ListValue* code = list.find("ERROR_CODE");
  const ListValue* details = list.find("ERROR_DETAILS");
  if (code == nullptr || details == nullptr || code->kind != "integer" ||
      details->kind != "array" || list.items.size() != 2)
    return {};
  ErrorRecord record{std::stoi(code->text), {}};
  for (const auto& [key, value] : details->items) {
    EXPECT_EQ("string", value.kind);
    record.details.push_back(value.text);
  }
  return record;
}

ListValue InstallerTest::listAt(const std::string& path) const {
  const auto text = _sandbox.readFile(path);
  if (!text) return {};
  const auto list = readXmlList(*text);
  EXPECT_TRUE(list.has_value()) << path << " is no property list: " << *text;
  return list.value_or(ListValue{});
}

bool InstallerTest::comesTrue(const std::function<bool()>& condition) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + RunOptions().limit;
  while (!condition()) {
    if (Clock::now() > end) return false;
    usleep(5000);
  }
  return true;
}

std::vector<TraceLine> InstallerTest::serviceLines() const {
  return {{"Info", "The pathToRcphome is: " + _instance.home() + "."},
          {"Info", "newInstallLocation : (null)."},
          {"Warning", "Can not copy to newInstallLocation because its nil!"}};
}

std::string stampOf(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  char text[16];
  std::strftime(text, sizeof text, "%d%m%y%H%M", &parts);
  return text;
}

StampWatch::StampWatch() : _start(std::time(nullptr)) {}

bool StampWatch::covers(const std::string& stamp) const {
  const std::time_t now = std::time(nullptr);
  for (std::time_t time = _start; time < now + 60; time += 60)
    if (stamp == stampOf(std::min(time, now))) return true;
  return false;
}

std::vector<std::string> sortedLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<TraceLine> operator+(std::vector<TraceLine> left, const std::vector<TraceLine>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

}  // namespace installer::cli
