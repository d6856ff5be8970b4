#pragma once

#include <spawn.h>

namespace installer {

// What starting a child needs and each system does in its own way.

// Lets a child hold no descriptor but 0 to 2. To be called after every other file action; answers
// flags to be added to the spawn attributes.
short keepStandardDescriptorsOnly(posix_spawn_file_actions_t* actions);

// The environment of this process, for its children.
char** ownEnvironment();

}  // namespace installer
