#include "ctl/support/Machine.h"

#include <ctime>

#include "ctl/Json.h"
#include "ctl/trace/TraceFile.h"
#include "hotfix/Version.h"
#include "platform/EntryFacts.h"
#include "platform/Platform.h"
#include "platform/SystemName.h"
#include "platform/UserContext.h"

namespace installer::ctl::support {

namespace {

Json marker() {
  const std::string& path = Platform::current().paths.errorMarker;
  const auto facts = entryAt(path);
  Json json = {{"path", path}, {"exists", facts.has_value()}};
  if (facts) {
    json["owner"] = facts->owner;
    json["link"] = facts->isLink;
    json["modified"] = isoTime(facts->modified);
  }
  return json;
}

}  // namespace

std::string machineDocument() {
  const SystemName system = systemName();
  return textOf(Json{{"hotfixctl", kVersion},
                     {"system",
                      {{"name", system.name},
                       {"release", system.release},
                       {"version", system.version},
                       {"machine", system.machine}}},
                     {"user", Platform::current().users->effectiveUserId()},
                     {"time", isoTime(std::time(nullptr))},
                     {"marker", marker()}});
}

}  // namespace installer::ctl::support
