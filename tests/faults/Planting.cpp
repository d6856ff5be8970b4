#include "faults/Planting.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "cli/Fixtures.h"
#include "faults/Normal.h"
#include "faults/Paths.h"
#include "support/ListText.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace fs = std::filesystem;

namespace {

const std::string kGuardedFolder = std::string(kGuarded) + "/folder";
const std::string kAside = "/Users/alice/aside";

std::string guardedFileFor(const std::string& path) {
  return std::string(kGuarded) + "/" + path.substr(path.rfind('/') + 1);
}

// As much like a file of that name that a reader takes it for one.
std::string secretIn(const std::string& path) {
  const std::string secret = kSecret;
  if (path.ends_with(".plist") || path == cli::kConfiguration || path == cli::kPasteboard)
    return test::xmlList(
        test::ListValue::dictionary({{"secret", test::ListValue::string(secret)}}));
  if (path.ends_with(".xml")) return "<secret is=\"" + secret + "\"/>\n";
  return "secret=" + secret + "\n";
}

// What the program looks for in the folders that can be replaced.
std::vector<std::string> namesInFolders() {
  return {".config/rcpinstall.properties",
          ".keystore",
          ".provisioning_rc",
          "com.kiv.rcp.base_6.2.3/plugin_customization.ini",
          "deploy/.keystore",
          "deploy/extras/readme.txt",
          "deploy/install.update.xml",
          "deploy/install.xml",
          "deploy/uninstall.hotfix.xml",
          "extras/readme.txt",
          "install.0101200000.xml",
          "install.update.xml",
          "install.xml",
          "installInfo.plist",
          "lib.txt",
          "plugin_customization.ini",
          "plugins/com.kiv.rcp.base_6.2.3/plugin.xml",
          "rcpinstall.properties",
          "rcplauncher.properties",
          "readme.txt",
          "run.sh",
          "systemdata/.config/rcpinstall.properties",
          "tools/run.sh",
          "uninstall.hotfix.xml"};
}

void guard(Files& files, const std::string& path) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
    if (end > std::string(kGuarded).size()) files[path.substr(0, end)] = {"folder", 0700, 0, 0, ""};
  files[path] = {"file", 0600, 0, 0, secretIn(path)};
}

std::optional<std::string> firstTemporary(const World& world, const Scenario& scenario) {
  for (const std::string& folder : {scenario.bundle, scenario.data, std::string("/tmp")}) {
    std::error_code ignored;
    for (const auto& entry : fs::recursive_directory_iterator(world.host(folder), ignored)) {
      const std::string path = entry.path().string().substr(world.root().size());
      if (isTemporary(path)) return path;
    }
  }
  return std::nullopt;
}

enum class Form { link, hardLink };

void plant(const World& world, const Scenario& scenario, const PlantedName& name, Form form) {
  const auto path = name.path.empty() ? firstTemporary(world, scenario) : name.path;
  if (!path) return;
  const std::string place = world.host(*path);
  const bool isFolder = name.isFolder || fs::is_directory(fs::symlink_status(place));
  if (form == Form::hardLink && isFolder) return;
  (void)std::rename(place.c_str(), world.host(kAside).c_str());  // there may be nothing yet
  const std::string target = guardOf(name, isFolder);
  const int planted = form == Form::link ? symlink(target.c_str(), place.c_str())
                                         : link(world.host(target).c_str(), place.c_str());
  if (planted == 0 && form == Form::link)
    (void)lchown(place.c_str(), test::kAlice, test::kAlice);  // as the user would have made it
}

// Whether the call looks at the name or what is below it, lists it or may change what it leads to.
bool isAbout(const PlantedName& name, const LoggedCall& call) {
  if (startsChild(*call.form)) return true;
  const auto touches = [&](const std::string& path) {
    if (name.path.empty()) return isTemporary(path);
    return isAtOrBelow(path, name.path) || path == folderOf(name.path);
  };
  return touches(call.path) || touches(call.otherPath);
}

// The first call, and each one after a call about the name. What is planted in between finds the
// program as one of these did: knowing the same of the name, and doing the same with it next.
std::vector<long> pointsAround(const PlantedName& name, const Learned& learned) {
  bool isNext = true;
  return callsThat(learned, [&](const LoggedCall& call) {
    const bool isPoint = isNext;
    isNext = isAbout(name, call);
    return isPoint;
  });
}

Kind planting(const PlantedName& name, Form form) {
  const std::string word = form == Form::link ? "link-" : "hard-link-";
  return {
      .name = word + name.name,
      .about = "before the call it leads to something guarded",
      .points =
          [name](const Scenario& scenario, const Learned& learned) {
            return pointsAround(inScenario(name, scenario), learned);
          },
      .action = [name, form](const Runner& runner, const Scenario& scenario, long point) -> Action {
        const PlantedName here = inScenario(name, scenario);
        return [=, &runner, &scenario](Tracee& program, const Call&, long number) {
          if (number != point) return;
          plant(runner.world(), scenario, here, form);
          program.letGo();
        };
      },
      .judging = Judging::foreign};
}

}  // namespace

PlantedName inScenario(const PlantedName& name, const Scenario& scenario) {
  const auto names = plantedNames(scenario);
  return *std::find_if(names.begin(), names.end(),
                       [&](const PlantedName& other) { return other.name == name.name; });
}

std::string guardOf(const PlantedName& name, bool isFolder) {
  if (isFolder) return kGuardedFolder;
  return name.path.empty() ? std::string(kGuarded) + "/file" : guardedFileFor(name.path);
}

void makeFolderOfLinks(const std::string& folder) {
  for (const std::string& name : namesInFolders()) {
    const fs::path link = folder + "/" + name;
    std::error_code ignored;  // whatever is moved away meanwhile lures nobody
    fs::create_directories(link.parent_path(), ignored);
    (void)symlink((kGuardedFolder + "/" + name).c_str(), link.c_str());
  }
}

std::vector<PlantedName> plantedNames(const Scenario& scenario) {
  cli::Instance instance;
  instance.bundle = scenario.bundle;
  const std::string home = instance.home();
  const std::string data = scenario.data;
  return {{"deploy", home + "/deploy", true},
          {"config", data + "/.config", true},
          {"eclipse", home + "/eclipse", true},
          {"plugins", home + "/eclipse/plugins", true},
          {"base-plugin", home + "/eclipse/plugins/com.kiv.rcp.base_6.2.3", true},
          {"extras", instance.deploy("extras"), true},
          {"extras-tools", instance.deploy("extras/tools"), true},
          {"extras-file", instance.deploy("extras/readme.txt")},
          {"shared", instance.shared(), true},
          {"shared-file", instance.shared() + "/lib.txt"},
          {"data", data, true},
          {"data-file", data + "/notes.txt"},
          {"home", home, true},
          {"info", instance.info()},
          {"install-xml", instance.deploy("install.xml")},
          {"update-xml", instance.deploy("install.update.xml")},
          {"uninstall-xml", instance.deploy("uninstall.hotfix.xml")},
          {"backup", instance.deploy("install.0101200000.xml")},
          {"keystore", instance.deploy(".keystore")},
          {"data-settings", data + "/.config/rcpinstall.properties"},
          {"customization", instance.customization()},
          {"launcher-settings", instance.launcherProperties()},
          {"result", instance.result()},
          {"trace", cli::kTrace},
          {"record", cli::kPasteboard},
          {"marker", cli::kMarker},
          {"configuration", cli::kConfiguration},
          {"staging", "/tmp/qlmcore2", true},
          {"temporary", ""}};
}

Scenario forPlanting(Scenario scenario) {
  scenario.scripts["rcplauncher"] = scenario.answerAlone;
  for (const std::string& name : namesInFolders())
    guard(scenario.files, kGuardedFolder + "/" + name);
  for (const PlantedName& name : plantedNames(scenario))
    if (!name.isFolder && !name.path.empty()) guard(scenario.files, guardedFileFor(name.path));
  return scenario;
}

std::vector<Kind> plantingKinds() {
  std::vector<Kind> all;
  for (const PlantedName& name : plantedNames(Scenario())) {
    all.push_back(planting(name, Form::link));
    if (!name.isFolder) all.push_back(planting(name, Form::hardLink));
  }
  return all;
}

}  // namespace installer::faults
