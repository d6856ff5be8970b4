#include "platform/KeptRunsFolder.h"

namespace installer {

std::string keptRunsFolder() {
  return "/Library/Logs/Hotfix";
}

}  // namespace installer
