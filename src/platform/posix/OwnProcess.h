#pragma once

#include <sys/types.h>

namespace installer {

// The number of this process, asked of the system once; a process that fork() makes asks for its
// own.
pid_t ownProcess();

}  // namespace installer
