#include "platform/ProcessSetup.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <syslog.h>
#include <unistd.h>

#include <csignal>

#include "platform/Interruption.h"

namespace installer {
namespace {

bool isSetUp = false;

// The lowest free descriptor is handed out first, so each hole is filled by its own open.
void fillStandardDescriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) == -1) (void)open("/dev/null", O_RDWR);  // without it as before
}

}  // namespace

void setUpProcess() {
  fillStandardDescriptors();
  (void)std::signal(SIGPIPE, SIG_IGN);  // the old handler is of no use
  (void)std::signal(SIGXFSZ, SIG_IGN);  // nor is this one
  noteInterruptions();
  openlog("HotfixInstaller", LOG_PID, LOG_USER);
  isSetUp = true;
}

bool ownsSystemLog() {
  return isSetUp;
}

// Root is known everywhere and at once; whoever else is asked for later can take their time.
void openUserDatabases() {
  fillStandardDescriptors();
  (void)getpwuid(0);  // only that it was asked counts
  (void)getgrgid(0);  // here as well
}

}  // namespace installer
