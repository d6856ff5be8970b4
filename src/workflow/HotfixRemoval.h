#pragma once

#include <string>

#include "hotfix/instance/InstanceService.h"

namespace installer {

// The removal of the hotfix that an instance, which is there, carries: the steps of
// HotfixUninstall.
class HotfixRemoval {
 public:
  // Makes the instance's service, with its lines.
  HotfixRemoval(const std::string& pathToRcphome, const std::string& pathToRcpData);

  // As HotfixUninstall::uninstallOldHotfix().
  [[nodiscard]] bool uninstallOldHotfix();

 private:
  [[nodiscard]] bool copyUninstallManifest();
  void startProvisioning();
  void removeHotfixReceipt();
  void clearRecords();

  std::string _pathToRcpHome;
  std::string _pathToRcpData;
  InstanceService _instance;
};

}  // namespace installer
