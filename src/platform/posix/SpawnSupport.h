#pragma once

#include <spawn.h>

namespace installer {

// Lets a child hold no descriptor but 0 to 2. To be called after every other file action; answers
// flags to be added to the spawn attributes. Each system has its own way.
short keepStandardDescriptorsOnly(posix_spawn_file_actions_t* actions);

}  // namespace installer
