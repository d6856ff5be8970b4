#include "platform/KeptRunsFolder.h"

namespace installer {

std::string keptRunsFolder() {
  return "/var/lib/hotfix";
}

}  // namespace installer
