#include "ctl/status/LastRun.h"

#include <algorithm>
#include <ctime>

#include "hotfix/util/InstallUtil.h"
#include "platform/EntryFacts.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

// The installer takes its destination as it stands: the instance may have other names, and one from
// the installer's working folder tells nothing to others.
bool isMeant(const std::optional<std::string>& named, const std::string& rcpHome) {
  if (!named || !named->starts_with('/')) return false;
  return *named == rcpHome || isSameItem(*named, rcpHome);
}

}  // namespace

std::optional<ErrorRecord> lastErrorRecord() {
  return errorRecordIn(InstallUtil::getErrorMessage());
}

std::optional<ErrorRecord> errorRecordIn(const std::optional<PropertyList::Dictionary>& record) {
  if (!record) return std::nullopt;
  ErrorRecord found;
  const PropertyList::Value* const code = record->find("ERROR_CODE");
  if (code == nullptr || code->as<std::int64_t>() == nullptr) return std::nullopt;
  found.code = *code->as<std::int64_t>();
  const PropertyList::Value* const details = record->find("ERROR_DETAILS");
  const auto* const texts = details == nullptr ? nullptr : details->as<PropertyList::Array>();
  if (texts == nullptr) return found;
  for (const PropertyList::Value& text : *texts)
    if (const auto* const one = text.as<std::string>()) found.details.push_back(*one);
  return found;
}

const Problem* LastRun::firstError() const {
  if (!trace || !trace->run) return nullptr;
  const std::vector<Problem>& problems = trace->run->problems;
  const auto found = std::find_if(problems.begin(), problems.end(), [](const Problem& problem) {
    return problem.level == LogLevel::error;
  });
  return found == problems.end() ? nullptr : &*found;
}

bool LastRun::failedOn(const std::string& rcpHome) const {
  if (!trace || !trace->run || !isMeant(trace->run->rcpHome, rcpHome)) return false;
  const Ending ending = trace->run->ending;
  return ending != Ending::installed && ending != Ending::atWork &&
         ending != Ending::higherHotfixInstalled;
}

LastRun lastRun() {
  LastRun last;
  FileError error;
  last.trace = readTrace(lastTrace(), error);
  if (!last.trace && error.code != FileError::kMissing) last.traceLack = error.description;
  if (last.trace) {
    const auto age = static_cast<std::int64_t>(std::time(nullptr) - last.trace->modified);
    last.traceAge = std::max<std::int64_t>(0, age);
  }
  last.record = lastErrorRecord();
  last.hasMarker = Platform::current().files->exists(Platform::current().paths.errorMarker);
  return last;
}

}  // namespace installer::ctl
