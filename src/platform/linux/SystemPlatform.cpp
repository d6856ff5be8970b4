#include "platform/SystemPlatform.h"

#include "platform/files/PosixFileManager.h"
#include "platform/linux/FilePasteboard.h"
#include "platform/linux/ProcProcessTable.h"
#include "platform/linux/SyslogSystemLog.h"
#include "platform/linux/UserPreferences.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixUserContext.h"

namespace installer {
namespace {

struct LinuxPlatform : Platform {
  LinuxPlatform() {
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
  ProcProcessTable _processes;
  FilePasteboard _pasteboard{_files, paths.pasteboard};
  SyslogSystemLog _log{_clock};
  UserPreferences _preferences{_files, _users};
};

}  // namespace

std::shared_ptr<Platform> makeSystemPlatform() {
  return std::make_shared<LinuxPlatform>();
}

}  // namespace installer
