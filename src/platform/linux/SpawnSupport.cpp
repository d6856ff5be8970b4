#include "platform/posix/SpawnSupport.h"

#include <unistd.h>

#include "platform/posix/Memory.h"

namespace installer {

short keepStandardDescriptorsOnly(posix_spawn_file_actions_t* actions) {
  checkMemory(posix_spawn_file_actions_addclosefrom_np(actions, 3));
  return 0;
}

char** ownEnvironment() {
  return environ;
}

}  // namespace installer
