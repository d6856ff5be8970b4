#pragma once

#include <filesystem>
#include <string>

#include "LaunchVector.h"
#include "LauncherLog.h"

namespace sample {

// What a run leaves under "rc" in its result file.
enum class ResultCode { kDone = 0, kUnusable = 1, kNothingNew = 2, kProvisioningFailed = 13 };

// One provisioning run on the instance whose rcp home is given.
class ProvisioningRun {
 public:
  explicit ProvisioningRun(const std::filesystem::path& rcpHome);

  ResultCode perform(const LaunchVector& launch) const;

  // For a start that is not understood.
  ResultCode refuse(int argumentCount) const;

  // Leaves the result where the installer looks for it, beside the rcp home.
  bool leaveResult(ResultCode code) const;

 private:
  ResultCode update(const LaunchVector& launch) const;
  ResultCode cleanUp() const;
  std::filesystem::path manifestInForce() const;
  bool isNew(const std::string& stamp, const std::string& digest) const;
  void remember(const std::string& stamp, const std::string& digest) const;

  std::filesystem::path _rcpHome;
  LauncherLog _log;
};

}  // namespace sample
