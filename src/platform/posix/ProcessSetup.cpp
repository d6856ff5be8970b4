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
void fillStandardDescriptors(int access) {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) == -1) (void)open("/dev/null", access);  // without it as before
}

void makeFailedWritesErrors() {
  (void)std::signal(SIGPIPE, SIG_IGN);  // the old handler is of no use
  (void)std::signal(SIGXFSZ, SIG_IGN);  // nor is this one
}

}  // namespace

void setUpProcess() {
  fillStandardDescriptors(O_RDWR);
  makeFailedWritesErrors();
  noteInterruptions();
  openlog("HotfixInstaller", LOG_PID, LOG_USER);
  isSetUp = true;
}

void setUpAnsweringProcess() {
  fillStandardDescriptors(O_RDONLY);
  makeFailedWritesErrors();
}

bool ownsSystemLog() {
  return isSetUp;
}

// Root is known everywhere and at once; whoever else is asked for later can take their time.
void openUserDatabases() {
  fillStandardDescriptors(O_RDWR);
  (void)getpwuid(0);  // only that it was asked counts
  (void)getgrgid(0);  // here as well
}

}  // namespace installer
