#include "platform/posix/SpawnSupport.h"

#include <unistd.h>

namespace installer {

short keepStandardDescriptorsOnly(posix_spawn_file_actions_t* actions) {
  (void)posix_spawn_file_actions_addclosefrom_np(actions, 3);  // fails for want of memory only
  return 0;
}

char** ownEnvironment() {
  return environ;
}

}  // namespace installer
