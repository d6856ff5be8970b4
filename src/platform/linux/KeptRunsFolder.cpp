#include "platform/KeptRunsFolder.h"

namespace installer {

std::string keptRunsFolder() {
  return "/var/log/hotfix";
}

}  // namespace installer
