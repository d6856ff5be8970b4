#include "ctl/install/Evidence.h"

#include <limits>
#include <utility>

#include "ctl/install/KeptRuns.h"
#include "ctl/trace/TraceFile.h"
#include "hotfix/base/Path.h"
#include "hotfix/platform/PropertyListFile.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/EntryFacts.h"
#include "platform/FileEnds.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::install {

namespace {

constexpr std::size_t kMostOutput = std::size_t{64} << 10;  // bytes
constexpr mode_t kPrivate = 0600;

std::optional<Run> runOf(const std::string& folder, std::optional<long> process) {
  FileError error;
  const std::optional<Trace> trace = readTrace(lastTrace(), error);
  if (!trace || !trace->run || trace->modified < plannedAt(folder)) return std::nullopt;
  return trace->run->process == process.value_or(trace->run->process) ? trace->run : std::nullopt;
}

// Of a run whose evidence was kept before its hotfixctl was killed.
std::optional<Run> keptRunIn(const std::string& folder) {
  const std::string name = path::lastComponent(lastTrace().path);
  FileError error;
  auto trace = readTrace({path::appendingComponent(folder, name), FinalLink::refuse, {}}, error);
  return trace ? std::move(trace->run) : std::nullopt;
}

std::optional<ErrorRecord> keptRecordIn(const std::string& folder) {
  return errorRecordIn(PropertyList::readDictionary(path::appendingComponent(folder, kRecordFile)));
}

std::optional<std::string> lackOfTrace(const std::string& folder) {
  const LineSource last = lastTrace();
  CopySource source(last.path);
  source.mayOwn = last.mayOwn;
  const std::string name = path::lastComponent(source.path);
  FileError error;
  if (Platform::current().files->copy(source, path::appendingComponent(folder, name),
                                      ExistingItem::keep, &error))
    return std::nullopt;
  return error.description;
}

std::optional<std::string> lackOfRecord(const std::string& folder) {
  const auto record = InstallUtil::getErrorMessage();
  const auto text = record ? PropertyList::serialize(*record) : std::nullopt;
  if (!text) return std::nullopt;
  FileError error;
  if (Platform::current().files->write(path::appendingComponent(folder, kRecordFile), *text,
                                       ReplacedFile::forget, kPrivate, &error))
    return std::nullopt;
  return error.description;
}

bool tellsTheEnd(const std::optional<Run>& run) {
  return run && run->ending != Ending::atWork && !mayBeAtWork(run);
}

}  // namespace

std::time_t plannedAt(const std::string& folder) {
  const auto plan = entryAt(path::appendingComponent(folder, kPlanFile));
  return plan ? plan->modified : std::numeric_limits<std::time_t>::max();
}

Evidence keepEvidence(const std::string& folder, std::optional<long> process) {
  Evidence evidence{keptRunIn(folder), std::nullopt, std::nullopt};
  if (evidence.run) evidence.record = keptRecordIn(folder);
  if (evidence.record) return evidence;
  const std::optional<Run> last = runOf(folder, process);
  if (!last) return evidence;
  evidence.run = last;
  evidence.record = lastErrorRecord();
  evidence.lack = lackOfTrace(folder);
  const std::optional<std::string> another = lackOfRecord(folder);
  if (!evidence.lack) evidence.lack = another;
  return evidence;
}

std::string outputIn(const std::string& folder) {
  FileError error;
  auto ends = readEnds(folder, kOutputFile, {kMostOutput, 0}, error);
  return ends ? std::move(ends->head) : "";
}

// A trace that has no end, of an installer that ended by itself, could not be written to its end.
Outcome outcomeOf(const WatchedEnd& end, const Evidence& evidence, bool isWanted) {
  if (end.status == 0) return outcomeOf(Ending::installed);
  const std::optional<Run>& run = evidence.run;
  if (tellsTheEnd(run) && run->ending != Ending::installed) return outcomeOf(run->ending);
  if (end.signal) return outcomeOf(Ending::brokenOff);
  if (isWanted) return outcomeOf(Ending::interrupted);
  const auto* const coded = evidence.record ? descriptionOf(evidence.record->code) : nullptr;
  return coded == nullptr ? kUntold : outcomeOf(coded->ending);
}

Outcome outcomeOfUnseen(const Evidence& evidence) {
  return outcomeOf(tellsTheEnd(evidence.run) ? evidence.run->ending : Ending::brokenOff);
}

}  // namespace installer::ctl::install
