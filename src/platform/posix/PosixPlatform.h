#pragma once

#include "platform/Platform.h"
#include "platform/files/PosixFileManager.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixUserContext.h"

namespace installer {

// The services that these systems share, kept alive with the platform. Each system adds its own.
struct PosixPlatform : Platform {
  PosixPlatform() {
    files = &_files;
    children = &_children;
    users = &_users;
    clock = &_clock;
  }

 protected:
  PosixClock _clock;
  PosixUserContext _users;
  PosixFileManager _files{_users};

 private:
  PosixChildProcesses _children;
};

}  // namespace installer
