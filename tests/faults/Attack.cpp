#include "faults/Attack.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <numeric>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "faults/Attacker.h"
#include "faults/Judgement.h"
#include "faults/Normal.h"
#include "faults/Paths.h"
#include "faults/Planting.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace fs = std::filesystem;

namespace {

constexpr long kRuns = 200;
// The success path with and without an older hotfix, the failure path, and the staging copy.
constexpr std::array<std::string_view, 4> kScenarios{"install", "upgrade", "higher", "staged"};
const std::string kBaits = "/Users/alice/baits";
constexpr int kHardLinks = 64;

// Application, data and the entry itself belong to the user, as on most machines.
Scenario forAttack(const Scenario& asItIs, const PlantedName& name) {
  Scenario scenario = forPlanting(asItIs);
  for (auto& [path, entry] : scenario.files)
    if (isAtOrBelow(path, scenario.bundle) || isAtOrBelow(path, scenario.data) ||
        isAtOrBelow(path, name.path))
      entry.owner = entry.group = test::kAlice;
  return scenario;
}

// Nobody but root can make these today: they stand for those that older kernels let users make.
void layHardLinks(const World& world, const std::string& guarded) {
  const std::string folder = world.host(kBaits);
  fs::create_directory(folder);
  for (int number = 1; number <= kHardLinks; ++number)
    (void)link(world.host(guarded).c_str(), fmt::format("{}/{}", folder, number).c_str());
  (void)lchown(folder.c_str(), test::kAlice, test::kAlice);
}

bool takeHardLink(const std::string& path) {
  for (int number = 1; number <= kHardLinks; ++number)
    if (std::rename(fmt::format("{}/{}", kBaits, number).c_str(), path.c_str()) == 0) return true;
  return false;
}

// Of what lies in /tmp users can move only their own, which a hard link to root's file is not.
void makeBait(const PlantedName& name, bool second, const std::string& path) {
  if (second && name.isFolder) return makeFolderOfLinks(path);
  if (second && !isAtOrBelow(path, "/tmp") && takeHardLink(path)) return;
  (void)symlink(guardOf(name, name.isFolder).c_str(), path.c_str());
}

// Adds what has a temporary name in the folder at this moment, while the program changes it.
void addTemporaryNames(const std::string& folder, std::vector<std::string>& paths) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error))
    if (isTemporary(entry->path().string())) paths.push_back(entry->path().string());
}

// Where the program makes such names.
std::vector<std::string> temporaryNames(const Scenario& scenario) {
  const std::string home = scenario.bundle + "/Contents/MacOS/rcp";
  std::vector<std::string> paths;
  for (const std::string& folder :
       {home, home + "/deploy", home + "/deploy/extras", scenario.data + "/.config"})
    addTemporaryNames(folder, paths);
  return paths;
}

// A run that was attacked from its beginning to its end, unless the attacker ended before.
struct Attacked {
  Run run;
  std::uint64_t exchanges = 0;
  bool isWhole = false;
};

Attacked attackedRun(const Runner& runner, const Scenario& scenario, const PlantedName& name,
                     long point) {
  runner.prepare(scenario);
  layHardLinks(runner.world(), guardOf(name, false));
  const auto places = [&] {
    return name.path.empty() ? temporaryNames(scenario) : std::vector{name.path};
  };
  const auto bait = [&](const std::string& path) { makeBait(name, point % 2 == 0, path); };
  Attacker attacker(runner.world(), {places, bait});
  const std::uint64_t before = attacker.exchanges();
  Attacked attacked;
  attacked.run = runner.run(scenario, letBe, {}, [&] {
    attacked.exchanges = attacker.exchanges() - before;
    attacked.isWhole = attacker.stop();
  });
  return attacked;
}

// What comes to be only for a moment or late may be missed.
bool isThereAllTheWhile(const PlantedName& name, const Scenario& scenario) {
  return !name.path.empty() && scenario.files.contains(folderOf(name.path));
}

Outcome attack(const Runner& runner, const Scenario& asItIs, const PlantedName& name, long point) {
  const Scenario scenario = forAttack(asItIs, name);
  Attacked attacked = attackedRun(runner, scenario, name, point);
  const auto isMissed = [&] {
    return attacked.exchanges == 0 && isThereAllTheWhile(name, scenario);
  };
  // A busy machine may have let the program run alone.
  if (isMissed()) attacked = attackedRun(runner, scenario, name, point);
  std::vector<Violation> found = judgeForeign(runner.world(), scenario, attacked.run);
  if (isMissed()) found.push_back({"attack", "nothing was exchanged while the program ran"});
  if (!attacked.isWhole) found.push_back({"attack", "the attacker ended before the program"});
  return {std::move(found), fmt::format("{} exchanges", attacked.exchanges), attacked.exchanges};
}

// In a folder that never comes to be nothing can be exchanged.
bool isWithinReach(const PlantedName& name, const Learned& learned) {
  return learned.files.contains(folderOf(name.path)) || name.path.empty();
}

std::vector<long> everyRun(const PlantedName& name, const Scenario& scenario,
                           const Learned& learned) {
  const bool isAsked =
      std::find(kScenarios.begin(), kScenarios.end(), scenario.name) != kScenarios.end();
  if (!isAsked || !isWithinReach(name, learned)) return {};
  std::vector<long> runs(kRuns);
  std::iota(runs.begin(), runs.end(), 1);
  return runs;
}

}  // namespace

std::vector<Kind> attackKinds() {
  std::vector<Kind> all;
  for (const PlantedName& name : plantedNames(Scenario()))
    all.push_back(
        {.name = "attack-" + name.name,
         .about = "all the while a user exchanges it with something guarded",
         .points =
             [name](const Scenario& scenario, const Learned& learned) {
               return everyRun(inScenario(name, scenario), scenario, learned);
             },
         .tried =
             [name](const Runner& runner, const Scenario& scenario, const Learned&, long point) {
               return attack(runner, scenario, inScenario(name, scenario), point);
             }});
  return all;
}

}  // namespace installer::faults
