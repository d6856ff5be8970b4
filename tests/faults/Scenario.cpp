#include "faults/Scenario.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

#include "faults/ScenarioFiles.h"

namespace installer::faults {

namespace {

std::string contentOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Scenario upgrade() {
  ScenarioFiles files;
  files.useData("/Users/alice/data");
  files.recordHotfix("1.4");
  files.addOldExtras();
  return files.scenario("upgrade", "an older hotfix is recorded; the data folder is elsewhere");
}

Scenario sameAgain() {
  ScenarioFiles files;
  files.recordHotfix("1.5");
  files.addOldExtras();
  return files.scenario("again", "the same hotfix is recorded");
}

Scenario staged() {
  ScenarioFiles files;
  const std::string destination = files.instance().bundle + "/Contents/Core";
  files.addStaging(destination);
  Scenario made =
      files.scenario("staged", "another installer has left a staging folder to be copied");
  made.copies = {destination};
  return made;
}

Scenario characters() {
  const ScenarioFiles files({.bundle = "/Applications/A=B/Quillmere.app"});
  return files.scenario("characters", "refused with code 3: a path can not be used", 1, 3);
}

Scenario running() {
  ScenarioFiles files;
  const std::string program = files.instance().bundle + "/Contents/MacOS/Quillmere";
  files.put(program, contentOf("/bin/sleep"), 0755);
  Scenario made = files.scenario("running", "refused with code 6: the application runs", 1, 6);
  // What can not be seen to run counts as not running.
  made.takenFor.push_back(made);
  made.running = program;
  return made;
}

Scenario higher() {
  ScenarioFiles files;
  files.recordHotfix("1.6");
  Scenario made =
      files.scenario("higher", "refused with code 7: a higher hotfix is recorded", 1, 7);
  // Of a record that can not be read no version is known, and the hotfix is installed.
  files.recordHotfix("1.4");
  made.takenFor.push_back(files.scenario("", ""));
  return made;
}

Scenario notInstalled() {
  ScenarioFiles files;
  files.remove(files.instance().deploy("install.xml"));
  return files.scenario("not-installed", "refused with code 8: no instance is there", 1, 8);
}

Scenario failing() {
  ScenarioFiles files;
  files.launcherAnswers("rc=13\n");
  return files.scenario("failing", "provisioning fails", 1);
}

Scenario newWorkspace() {
  ScenarioFiles files;
  files.remove(files.data() + "/.config");
  return files.scenario("new-workspace",
                        "the application has never been started: all is done twice");
}

Scenario noManifest() {
  ScenarioFiles files;
  files.remove(files.package().deployFile("install.hotfix.xml"));
  return files.scenario("no-manifest", "the package has no install manifest: code 4", 1, 4);
}

Scenario brokenMerge() {
  ScenarioFiles files;
  files.addBrokenMerge();
  return files.scenario("broken-merge", "an earlier run was killed while it merged the extras");
}

}  // namespace

const std::vector<Scenario>& scenarios() {
  static const std::vector<Scenario> all{
      ScenarioFiles().scenario("install", "a fresh install"),
      upgrade(),
      sameAgain(),
      characters(),
      running(),
      higher(),
      notInstalled(),
      failing(),
      newWorkspace(),
      noManifest(),
      brokenMerge(),
      staged(),
  };
  return all;
}

bool mayBeLost(const Scenario& scenario, const std::string& path) {
  return std::any_of(scenario.losses.begin(), scenario.losses.end(),
                     [&](const std::string& place) { return path.starts_with(place); });
}

const Scenario* scenarioNamed(const std::string& name) {
  const auto& all = scenarios();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const Scenario& scenario) { return scenario.name == name; });
  return found == all.end() ? nullptr : &*found;
}

std::map<std::string, std::string> environment() {
  return {{"HOME", "/Users/alice"}, {"USER", "alice"}, {"PATH", "/usr/bin:/bin"}, {"TZ", "UTC"}};
}

}  // namespace installer::faults
