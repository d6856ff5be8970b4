#include "ctl/report/Fleet.h"

#include <algorithm>
#include <limits>
#include <map>
#include <tuple>

#include "ctl/Endings.h"
#include "ctl/status/StatusText.h"

namespace installer::ctl::report {

namespace {

// A status knows the end of a run by its trace's time, a result by a clock beside the run.
constexpr std::int64_t kSameRun = 60;  // seconds

std::int64_t endOf(const ToldRun& run) {
  return run.ended.value_or(std::numeric_limits<std::int64_t>::min() / 2);
}

bool isNewer(const ToldRun& run, const ToldRun& known) {
  if (run.steps.empty() == known.steps.empty()) return endOf(run) >= endOf(known);
  return run.steps.empty() ? endOf(run) > endOf(known) + kSameRun
                           : endOf(run) + kSameRun >= endOf(known);
}

void take(ToldInstance instance, Machine& machine) {
  const auto known =
      std::find_if(machine.instances.begin(), machine.instances.end(),
                   [&](const ToldInstance& one) { return one.place == instance.place; });
  if (known != machine.instances.end())
    *known = std::move(instance);
  else if (machine.instances.size() < kMostInstances)
    machine.instances.push_back(std::move(instance));
}

void take(Told told, Machine& machine) {
  for (ToldInstance& instance : told.instances) take(std::move(instance), machine);
  if (told.run && (!machine.run || isNewer(*told.run, *machine.run)))
    machine.run = std::move(told.run);
}

bool hasInstance(const Machine& machine, bool (*isSuch)(InstanceState)) {
  return std::any_of(machine.instances.begin(), machine.instances.end(),
                     [&](const ToldInstance& one) { return isSuch(one.state); });
}

bool needsAttention(InstanceState state) {
  return state >= InstanceState::needsAttention;
}
bool lacksHotfix(InstanceState state) {
  return state == InstanceState::noHotfix;
}

Standing standingOf(const Machine& machine) {
  if (machine.run && isFailure(machine.run->cause)) return Standing::failed;
  if (hasInstance(machine, needsAttention)) return Standing::needsAttention;
  if (machine.run && machine.run->cause == descriptionOf(Ending::atWork).name)
    return Standing::atWork;
  const bool isKnown = !machine.instances.empty() || machine.run;
  if (!isKnown || hasInstance(machine, lacksHotfix)) return Standing::noHotfix;
  return Standing::good;
}

// The worst of its instances' states.
InstanceState stateOf(const Machine& machine) {
  InstanceState worst = InstanceState::hotfixInstalled;
  for (const ToldInstance& instance : machine.instances) worst = std::max(worst, instance.state);
  return worst;
}

class Groups {
 public:
  void add(const std::string& name, std::size_t machine) {
    std::vector<std::size_t>& machines = _groups[name];
    if (machines.empty() || machines.back() != machine) machines.push_back(machine);
  }
  std::vector<Group> sorted() const {
    std::vector<Group> all;
    for (const auto& [name, machines] : _groups) all.push_back({name, machines});
    std::stable_sort(all.begin(), all.end(), [](const Group& one, const Group& other) {
      return one.machines.size() > other.machines.size();
    });
    return all;
  }

 private:
  std::map<std::string, std::vector<std::size_t>> _groups;
};

void group(Fleet& fleet) {
  Groups versions;
  Groups failures;
  Groups findings;
  for (std::size_t i = 0; i < fleet.machines.size(); ++i) {
    const Machine& machine = fleet.machines[i];
    for (const std::string& version : machine.versions()) versions.add(version, i);
    if (machine.standing == Standing::failed) failures.add(machine.run->cause, i);
    for (const ToldInstance& instance : machine.instances)
      for (const ToldFinding& finding : instance.findings) findings.add(finding.name, i);
  }
  fleet.versions = versions.sorted();
  fleet.failures = failures.sorted();
  fleet.findings = findings.sorted();
}

}  // namespace

std::string labelOf(std::string_view name) {
  std::string label(name);
  std::replace(label.begin(), label.end(), '-', ' ');
  if (!label.empty() && label.front() >= 'a' && label.front() <= 'z')
    label.front() = static_cast<char>(label.front() - 'a' + 'A');
  return label;
}

std::vector<std::string> Machine::versions() const {
  std::vector<std::string> all;
  for (const ToldInstance& instance : instances) {
    const bool isKnown = instance.isVersionKnown();
    std::string version = instance.version.value_or(std::string(kNoVersion));
    if (isKnown && std::find(all.begin(), all.end(), version) == all.end())
      all.push_back(std::move(version));
  }
  std::sort(all.begin(), all.end());
  if (all.empty()) all.emplace_back(kUnknownVersion);
  return all;
}

std::string Machine::label() const {
  const bool isOfRun = standing == Standing::failed || standing == Standing::atWork;
  if (run && (isOfRun || instances.empty())) return labelOf(run->cause);
  return labelOf(nameOf(instances.empty() ? InstanceState::noInstance : stateOf(*this)));
}

Fleet fleetOf(std::vector<Told> told) {
  std::stable_sort(told.begin(), told.end(),
                   [](const Told& one, const Told& other) { return one.at < other.at; });
  std::map<std::string, std::size_t> places;
  Fleet fleet;
  for (Told& one : told) {
    const auto [place, isNew] = places.try_emplace(one.machine, fleet.machines.size());
    if (isNew) fleet.machines.push_back({one.machine, {}, std::nullopt, Standing::good});
    take(std::move(one), fleet.machines[place->second]);
  }
  for (Machine& machine : fleet.machines) machine.standing = standingOf(machine);
  std::sort(fleet.machines.begin(), fleet.machines.end(),
            [](const Machine& one, const Machine& other) {
              return std::tie(one.standing, one.name) < std::tie(other.standing, other.name);
            });
  group(fleet);
  return fleet;
}

}  // namespace installer::ctl::report
