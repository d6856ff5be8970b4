#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "hotfix/driver/Installer.h"
#include "platform/ProcessSetup.h"

namespace {

[[maybe_unused]] const bool kDatabasesAreOpen = (installer::openUserDatabases(), true);

}  // namespace

int main(int argc, char* argv[]) {
  installer::setUpProcess();
  try {
    return installer::runInstaller(std::vector<std::string>(argv, argv + argc));
  } catch (const std::bad_alloc&) {
    // Before the run had a log to tell it to.
    (void)std::fputs("HotfixInstaller: There is not enough memory to begin.\n", stderr);
    return 1;
  }
}
