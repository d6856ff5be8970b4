#pragma once

#include <string>
#include <vector>

#include "ctl/Command.h"
#include "ctl/status/Places.h"

namespace installer::ctl {

// hotfixctl status: which hotfix the instances of this machine have, and whether all is well.
extern const Command kStatus;

// The instances that the arguments of a command name; all known ones where there are none.
std::vector<InstancePlace> placesOf(const std::vector<std::string>& arguments);

// What it answers with --doctor and --json about these.
std::string statusDocument(const std::vector<InstancePlace>& places);

}  // namespace installer::ctl
