#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ctl/trace/TraceFile.h"
#include "hotfix/base/PropertyList.h"

namespace installer::ctl {

struct ErrorRecord {
  std::int64_t code = 0;
  std::vector<std::string> details;
};

// nullopt for what is no error record.
std::optional<ErrorRecord> errorRecordIn(const std::optional<PropertyList::Dictionary>& record);
// That of the last run on this machine; nullopt when there is none.
std::optional<ErrorRecord> lastErrorRecord();

// What the last run on this machine left outside of the instances.
struct LastRun {
  std::optional<Trace> trace;
  std::optional<std::string> traceLack;  // why there is none, though something is there
  std::int64_t traceAge = 0;             // seconds since it was changed
  std::optional<ErrorRecord> record;
  bool hasMarker = false;

  // The first error line of the run; nullptr when there is none.
  const Problem* firstError() const;
  // Whether the run was meant for the instance, and did not install its hotfix although it could
  // have been.
  bool failedOn(const std::string& rcpHome) const;
};

LastRun lastRun();

}  // namespace installer::ctl
