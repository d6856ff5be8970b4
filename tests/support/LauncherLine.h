#pragma once

#include <string>
#include <vector>

#include "instance/ProvisioningCommand.h"

namespace installer::test {

// The launcher's command line while it provisions.
inline std::vector<std::string> launcherLine(const std::string& launcher) {
  std::vector<std::string> line = {launcher};
  for (const std::string& argument :
       ProvisioningCommand::arguments(ProvisioningCommand::kUpdate, "en_US", "/data"))
    line.push_back(argument);
  return line;
}

}  // namespace installer::test
