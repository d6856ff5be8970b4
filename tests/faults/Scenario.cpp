#include "faults/Scenario.h"

#include <algorithm>
#include <utility>

#include "faults/ScenarioFiles.h"

namespace installer::faults {

namespace {

Scenario plain(const std::string& name, const std::string& about) {
  return ScenarioFiles().scenario(name, about);
}

Scenario upgrade() {
  ScenarioFiles files;
  files.useData("/Users/alice/data");
  files.recordHotfix("1.4");
  files.addOldExtras();
  return files.scenario("upgrade", "an older hotfix is recorded; the data folder is elsewhere");
}

}  // namespace

const std::vector<Scenario>& scenarios() {
  static const std::vector<Scenario> all{
      plain("install", "a fresh install"),
      upgrade(),
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
