#pragma once

#include <string>

#include "hotfix/instance/InstanceService.h"

namespace installer {

// What becomes the user's before the last record of the hotfix goes.
enum class HandOver { data, everything };

// The removal of the hotfix that an instance, which is there, carries: the steps of
// HotfixUninstall.
class HotfixRemoval {
 public:
  // Makes the instance's service, with its lines. An installation hands the rest over at its own
  // end; where none follows everything has to go before the record does, so that who is killed on
  // the way can be taken up.
  HotfixRemoval(const std::string& pathToRcphome, const std::string& pathToRcpData,
                HandOver handOver);

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
  HandOver _handOver;
};

}  // namespace installer
