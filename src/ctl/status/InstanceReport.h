#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ctl/QuietPlatform.h"
#include "ctl/status/Finding.h"
#include "ctl/status/Places.h"
#include "ctl/trace/TraceFile.h"

namespace installer::ctl {

// The states of an instance are the command's exit statuses; of several instances the greatest is.
enum class InstanceState {
  hotfixInstalled = 0,
  noHotfix = 1,
  needsAttention = 2,
  noInstance = 3,
  notReadable = 4,
};

struct InstalledHotfix {
  std::string version;
  std::optional<std::string> identifier;
};

// The launcher's last answer.
struct ProvisioningAnswer {
  std::optional<std::string> code;  // nullopt for a result file without one
  bool succeeded = false;
};

struct InstanceReport {
  InstancePlace place;
  std::optional<std::string> bundle;
  std::optional<std::string> product;
  InstanceState state = InstanceState::noInstance;
  std::optional<std::string> reason;  // why the instance is not readable
  std::optional<std::string> applicationVersion;
  std::optional<std::string> baseVersion;
  std::optional<std::string> recordedVersion;
  std::optional<InstalledHotfix> hotfix;
  std::optional<ProvisioningAnswer> provisioning;
  bool isAtWork = false;  // an installer is, right now
  std::vector<Finding> findings;
};

// Looks at an instance, and changes nothing. With `doctor` also for signs of something half done.
InstanceReport reportOn(const InstancePlace& place, bool doctor, QuietPlatform& quiet);

}  // namespace installer::ctl
