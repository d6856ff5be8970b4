#include "platform/SystemPlatform.h"

#include "platform/macos/AppKitPasteboard.h"
#include "platform/macos/AslSystemLog.h"
#include "platform/macos/CoreFoundationPreferences.h"
#include "platform/macos/LibprocProcessTable.h"
#include "platform/posix/PosixPlatform.h"

namespace installer {
namespace {

struct MacPlatform : PosixPlatform {
  MacPlatform() {
    processes = &_processes;
    pasteboard = &_pasteboard;
    log = &_log;
    preferences = &_preferences;
  }

 private:
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
