#include "platform/KeptRunsFolder.h"

namespace installer {

std::string keptRunsFolder() {
  return "/var/db/hotfix";
}

}  // namespace installer
