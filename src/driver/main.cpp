#include <string>
#include <vector>

#include "hotfix/driver/Installer.h"
#include "platform/ProcessSetup.h"

int main(int argc, char* argv[]) {
  installer::setUpProcess();
  return installer::runInstaller(std::vector<std::string>(argv, argv + argc));
}
