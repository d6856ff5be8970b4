#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include "platform/overlay/Tree.h"

namespace installer::test {

// This process as one that makes things.
inline overlay::Maker ownMaker() {
  const mode_t mask = ::umask(0);
  (void)::umask(mask);  // it answers the one before
  return {.user = ::geteuid(), .group = ::getegid(), .mask = mask};
}

}  // namespace installer::test
