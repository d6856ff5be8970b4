#include "platform/SystemPlatform.h"

#include <syslog.h>

#include "platform/ProcessSetup.h"
#include "platform/linux/ProcProcessTable.h"
#include "platform/linux/SyslogSystemLog.h"
#include "platform/posix/FilePasteboard.h"
#include "platform/posix/PosixPlatform.h"
#include "platform/posix/UserPreferences.h"

namespace installer {
namespace {

SyslogSystemLog systemLog(Clock& clock) {
  if (!ownsSystemLog()) return SyslogSystemLog(clock);
  return {clock, _PATH_LOG};
}

struct LinuxPlatform : PosixPlatform {
  LinuxPlatform() {
    processes = &_processes;
    pasteboard = &_pasteboard;
    log = &_log;
    preferences = &_preferences;
  }

 private:
  ProcProcessTable _processes;
  FilePasteboard _pasteboard{_files, paths.pasteboard};
  SyslogSystemLog _log = systemLog(_clock);
  UserPreferences _preferences{_files, _users};
};

}  // namespace

std::shared_ptr<Platform> makeSystemPlatform() {
  return std::make_shared<LinuxPlatform>();
}

}  // namespace installer
