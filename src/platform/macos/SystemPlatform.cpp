#include "platform/SystemPlatform.h"

#include <limits.h>
#include <sys/resource.h>

#include <algorithm>

#include "platform/ProcessSetup.h"
#include "platform/macos/AppKitPasteboard.h"
#include "platform/macos/AslSystemLog.h"
#include "platform/macos/CoreFoundationPreferences.h"
#include "platform/macos/LibprocProcessTable.h"
#include "platform/posix/FilePasteboard.h"
#include "platform/posix/PosixPlatform.h"
#include "platform/posix/UserPreferences.h"

namespace installer {
namespace {

// A walk holds two descriptors for each folder that it is in, and processes have 256 here at first.
// More than OPEN_MAX are refused, whatever the upper limit says. A host of the library keeps its
// own limit.
void raiseDescriptorLimit() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  const rlim_t most = std::min(limit.rlim_max, static_cast<rlim_t>(OPEN_MAX));
  if (limit.rlim_cur >= most) return;
  limit.rlim_cur = most;
  (void)::setrlimit(RLIMIT_NOFILE, &limit);  // deep folders are told where they end
}

struct MacPlatform : PosixPlatform {
  MacPlatform() {
    processes = &_processes;
    pasteboard = &_pasteboard;
    log = &_log;
    preferences = &_preferences;
  }

 private:
  LibprocProcessTable _processes;
  FilePasteboard _recordFile{_files, paths.pasteboard};
  AppKitPasteboard _pasteboard{_recordFile};
  AslSystemLog _log{_clock};
  UserPreferences _preferenceFiles{_files, _users};
  CoreFoundationPreferences _preferences{_users, _preferenceFiles};
};

}  // namespace

std::shared_ptr<Platform> makeSystemPlatform() {
  if (ownsSystemLog()) raiseDescriptorLimit();
  return std::make_shared<MacPlatform>();
}

}  // namespace installer
