#include "platform/SystemPlatform.h"

#include "platform/files/PosixFileManager.h"
#include "platform/macos/AppKitPasteboard.h"
#include "platform/macos/AslSystemLog.h"
#include "platform/macos/CoreFoundationPreferences.h"
#include "platform/macos/LibprocProcessTable.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixUserContext.h"

namespace installer {
namespace {

struct MacPlatform : Platform {
  MacPlatform() {
    files = &_files;
    children = &_children;
    processes = &_processes;
    pasteboard = &_pasteboard;
    log = &_log;
    preferences = &_preferences;
    users = &_users;
    clock = &_clock;
  }

 private:
  PosixClock _clock;
  PosixUserContext _users;
  PosixFileManager _files{_users};
  PosixChildProcesses _children;
  LibprocProcessTable _processes;
  AppKitPasteboard _pasteboard;
  AslSystemLog _log{_clock};
  CoreFoundationPreferences _preferences{_users};
};

}  // namespace

std::shared_ptr<Platform> makeSystemPlatform() {
  return std::make_shared<MacPlatform>();
}

}  // namespace installer
