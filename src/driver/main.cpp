#include <new>
#include <string>
#include <vector>

#include "driver/MemoryLack.h"
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
    installer::tellOfMemoryWithoutTrace(installer::kNoMemoryToBegin);
    return 1;
  }
}
