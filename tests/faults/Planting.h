#pragma once

#include <string>
#include <vector>

#include "faults/Kinds.h"
#include "faults/Scenario.h"

namespace installer::faults {

// A name that a user can get at, and what it is to lead to.
struct PlantedName {
  std::string name;  // for people
  std::string path;  // "" for the first temporary name that is found
  bool isFolder = false;
};

// All names of a scenario at which something is planted.
std::vector<PlantedName> plantedNames(const Scenario& scenario);

// The scenario with a launcher that walks through no planted link itself, and with more below
// kGuarded: a file for each of the names, and a folder that holds whatever the program looks for in
// a folder, all of them with the secret in the form that a file of that name has.
Scenario forPlanting(Scenario scenario);

// The guarded item that looks like what the name has, or would have.
std::string guardOf(const PlantedName& name, bool isFolder);

// Makes, in a folder of the user, a link for everything that the program looks for in a folder, to
// the same in the guarded folder. Paths are those of this process.
void makeFolderOfLinks(const std::string& folder);

// The name of that kind as it is in the scenario.
PlantedName inScenario(const PlantedName& name, const Scenario& scenario);

// One kind for each name and form: before the call the entry is moved away, and a link to something
// guarded takes its place.
std::vector<Kind> plantingKinds();

}  // namespace installer::faults
