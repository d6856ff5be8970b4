#include "faults/ScenarioFiles.h"

#include <utility>

#include "faults/Paths.h"
#include "support/ListText.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

using test::ListValue;

namespace {

using Entries = std::vector<std::pair<std::string, ListValue>>;

std::string listOf(Entries entries) {
  return test::xmlList(ListValue::dictionary(std::move(entries)));
}

std::string childProgram() {
  return std::string("#!") + test::kChildInRoot + "\n";
}

// Longer than a block of most file systems.
std::string longText() {
  std::string text;
  while (text.size() < 5000) text += "a line of an extra file\n";
  return text;
}

std::string resolvedManifest(const std::string& package) {
  std::string text = cli::kSimpleManifest;
  const std::string variable = "${installer.root}";
  return text.replace(text.find(variable), variable.size(), "file:" + package);
}

}  // namespace

ScenarioFiles::ScenarioFiles(cli::Instance instance)
    : _instance(std::move(instance)), _data(_instance.data()) {
  addSurroundings();
  addInstance();
  addData(_data);
  addPackage();
  addTools();
  _files.erase("/usr");  // only some folders in it are a run's
}

void ScenarioFiles::add(const std::string& path, test::TreeEntry entry) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
    _files.try_emplace(path.substr(0, end), test::TreeEntry{"folder", 0755, 0, 0, ""});
  _files[path] = std::move(entry);
}

void ScenarioFiles::put(const std::string& path, const std::string& content, mode_t mode) {
  const bool ofUser = path.starts_with("/Users/alice") || path.starts_with(_instance.bundle);
  const uid_t owner = ofUser ? test::kAlice : 0;
  add(path, {"file", mode, owner, owner, content});
}

void ScenarioFiles::remove(const std::string& path) {
  std::erase_if(_files, [&](const auto& entry) {
    return entry.first == path || entry.first.starts_with(path + "/");
  });
}

void ScenarioFiles::addSurroundings() {
  for (const std::string& folder : World::folders())
    _files[folder] = {"folder", folder == "/tmp" ? mode_t{01777} : mode_t{0755}, 0, 0, ""};
  _files["/Users/alice"] = {"folder", 0755, test::kAlice, test::kAlice, ""};
  put(std::string(kGuarded) + "/file", std::string("secret=") + kSecret + "\n", 0600);
  _files[kGuarded].mode = 0700;
}

void ScenarioFiles::addInstance() {
  const cli::Instance& instance = _instance;
  put(instance.bundle + "/Contents/Info.plist",
      listOf({{"CFBundleIdentifier", ListValue::string("com.kiv.quillmere")},
              {"CFBundleShortVersionString", ListValue::string("8.5.2")}}));
  put(instance.launcher(), childProgram(), 0755);
  put(instance.launcherProperties(),
      "# launcher\nprovisioning.manifest.version=0101200000\nrcp.install.id=0101200000\n"
      "rcp.data=/Users/alice/workspace\n");
  put(instance.deploy("install.xml"), cli::kInstanceManifest);
  put(instance.customization(), "a=1\nb=2\n");
  put(instance.deploy(".keystore"), "old key\n");
  put(instance.deploy(".keystore.gone"), "a key of the old days\n");
  put(instance.home() + "/eclipse/plugins/com.kiv.rcp.base_6.2.3/plugin.xml", "<plugin/>\n");
  put(instance.shared() + "/lib.txt", "shared\n");
  put(instance.tool(), "jar\n");
  put(instance.info(), listOf({{"version", ListValue::string("8.5.2")}}));
}

void ScenarioFiles::addData(const std::string& folder) {
  put(folder + "/.config/rcpinstall.properties", "rcp.install.id=0101200000\n");
  put(folder + "/notes.txt", "the user's own\n");
}

void ScenarioFiles::addPackage() {
  const cli::Package& package = _package;
  put(package.list(), listOf(package.preferences));
  put(package.folder + "/Contents/Info.plist",
      listOf({{"CFBundleIdentifier", ListValue::string("com.kiv.hotfix.fifteen")}}));
  put(package.deployFile("install.hotfix.xml"), cli::kSimpleManifest);
  put(package.deployFile("uninstall.hotfix.xml"), cli::kUninstallManifest);
  put(package.deployFile("plugin_customization.ini"), "b=3\nc=4\n");
  put(package.deployFile(".keystore"), "new key\n");
  put(package.deployFile(".keystore.more"), "another key\n");
  put(package.deployFile("extras/readme.txt"), "extra\n");
  put(package.deployFile("extras/tools/run.sh"), "echo run\n", 0755);
  put(package.deployFile("extras/tools/long.txt"), longText());
}

void ScenarioFiles::addTools() {
  put("/java/bin/java", childProgram(), 0755);
  put("/usr/libexec/java_home", childProgram(), 0755);
  put("/usr/sbin/pkgutil", childProgram(), 0755);
}

void ScenarioFiles::useData(const std::string& folder) {
  remove(_data);
  _data = folder;
  addData(_data);
}

void ScenarioFiles::recordHotfix(const std::string& version) {
  put(_instance.info(),
      listOf({{"version", ListValue::string("8.5.2")},
              {"hotfixVersion", ListValue::string(version)},
              {"SKIPRUNNINGCHECK", ListValue::string("false")},
              {"installedHotfixBundleID", ListValue::string("com.kiv.hotfix.old")}}));
  put(_instance.deploy("uninstall.hotfix.xml"), "<uninstall what=\"the old one\"/>\n");
}

void ScenarioFiles::addOldExtras() {
  put(_instance.deploy("extras/readme.txt"), "an old extra\n");
  put(_instance.deploy("extras/tools/run.sh"), "echo old\n", 0755);
  put(_instance.deploy("extras/own.txt"), "the user's own\n");
}

void ScenarioFiles::addBrokenMerge() {
  addOldExtras();
  put(_instance.deploy("extras/readme.txt"), "extra\n");
  put(_instance.deploy("extras/.hotfix-1001"), "ext");
  put(_instance.deploy("extras/tools/.hotfix-1002"), longText());
  put(_instance.deploy(".hotfix-1003/tools/run.sh"), "echo");
}

void ScenarioFiles::addStaging(const std::string& destination) {
  put("/tmp/qlmcore2/core/core.txt", "the core\n");
  put("/tmp/qlmcore2/readme.txt", "staged\n");
  put(cli::kConfiguration, listOf({{"newInstallLocation", ListValue::string(destination)}}));
}

// A launcher installs something, and never through a link that another left at its result's name.
std::string ScenarioFiles::launcherScript() const {
  const std::string plugin = _instance.home() + "/eclipse/plugins/com.kiv.fix_1.5";
  return test::ChildScript()
      .snapshot(_instance.deploy("install.update.xml"))
      .folder(plugin)
      .write(plugin + "/plugin.xml", "<plugin what=\"the fix\"/>\n")
      .remove(_instance.result())
      .write(_instance.result(), _result)
      .text();
}

Scenario ScenarioFiles::scenario(const std::string& name, const std::string& about, int status,
                                 int code) const {
  Scenario made;
  made.status = status;
  made.code = code;
  made.name = name;
  made.about = about;
  made.arguments = {_package.folder, folderOf(_instance.bundle)};
  if (_data != _instance.data()) made.arguments.insert(made.arguments.end(), {"-rcpdata", _data});
  made.files = _files;
  ScenarioFiles usedUp = *this;
  usedUp.remove(_instance.deploy("uninstall.hotfix.xml"));
  if (usedUp._files.size() != _files.size()) made.laterStarts.push_back(usedUp._files);
  made.answerAlone = test::ChildScript()
                         .snapshot(_instance.deploy("install.update.xml"))
                         .write("/control/answer", _result)
                         .rename("/control/answer", _instance.result())
                         .text();
  made.scripts = {{"rcplauncher", launcherScript()},
                  {"java_home", test::ChildScript().print("/java\n").text()}};
  made.bundle = _instance.bundle;
  made.losses = {_instance.deploy(".keystore"), _instance.deploy("extras")};
  made.silences = {_instance.customization(), cli::kPasteboard, cli::kMarker};
  made.silentKeys = {{_instance.info(), "installedHotfixBundleID"}};
  made.substitutes = _files;
  if (_files.contains(_instance.deploy("install.xml")))
    made.substitutes[_instance.deploy("install.old.xml")] =
        _files.at(_instance.deploy("install.xml"));
  made.data = _data;
  made.ownManifest = resolvedManifest(_package.folder);
  Scenario refused = made;
  ScenarioFiles higher = *this;
  higher.recordHotfix("9.9");
  refused.files = higher._files;
  made.takenFor.push_back(std::move(refused));
  return made;
}

}  // namespace installer::faults
