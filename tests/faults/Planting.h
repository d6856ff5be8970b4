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

// One kind for each name and form: before the call the entry is moved away, and a link to something
// guarded takes its place.
std::vector<Kind> plantingKinds();

}  // namespace installer::faults
