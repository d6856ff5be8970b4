#include "platform/posix/SpawnSupport.h"

#include <crt_externs.h>
#include <unistd.h>

#include "platform/posix/Memory.h"

namespace installer {

// With the flag every descriptor is closed that no file action names.
short keepStandardDescriptorsOnly(posix_spawn_file_actions_t* actions) {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    checkMemory(posix_spawn_file_actions_addinherit_np(actions, descriptor));
  return POSIX_SPAWN_CLOEXEC_DEFAULT;
}

// A shared library cannot name `environ` itself.
char** ownEnvironment() {
  return *_NSGetEnviron();
}

}  // namespace installer
