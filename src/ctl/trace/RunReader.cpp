#include "ctl/trace/RunReader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace installer::ctl {

namespace {

constexpr std::string_view kBegin = "Begin to install hotfix.";
constexpr std::string_view kChecksPassed = "Success";
constexpr std::string_view kCheckFailed = "Not success";
constexpr std::string_view kInstanceMade = "The pathToRcphome is: ";
constexpr std::string_view kOlderFound =
    "Found another hot fix, uninstall it before installing the new hot fix";
constexpr std::string_view kTwice =
    "Hot fix workspace flag file is missing, launching install new hotfix twice";
constexpr std::string_view kManifestCopied = "Copy install manifest to ";
constexpr std::string_view kPrepared = "Copy install manifest.";
constexpr std::string_view kProvisioning = "Start provisioning system. ";
constexpr std::string_view kRecorded = "Begin to update new hotfix version.";
constexpr std::string_view kCollection = "Begin to call collection utility ";
constexpr std::string_view kEndsHere = ". The installation ends here.";
constexpr std::string_view kSignal = "Asked to end by ";
constexpr std::string_view kNoMemory = "There is not enough memory to ";
constexpr std::string_view kNotLocked = "\" cannot be locked: ";
// It belongs to every run of which no other installer wanted files copied.
constexpr std::string_view kUsualWarning = "Can not copy to newInstallLocation because its nil!";
// What is wrong with a package that names no instance.
constexpr std::array<std::string_view, 3> kPackageLacks = {"There is no install package at ",
                                                           "There is no hotfix description at ",
                                                           "The hotfix description "};
constexpr std::string_view kUserLost = "The process could not become its own user again.";

// Lines that begin a step by themselves.
struct StepBeginning {
  std::string_view text;
  StepKind kind;
};
constexpr std::array kBeginnings{
    StepBeginning{"Another installation is at work on this instance", StepKind::waitForInstaller},
    StepBeginning{"A launcher that an earlier installation left behind is at work",
                  StepKind::waitForLauncher},
    StepBeginning{"Check whether the unsupported characters are contained.", StepKind::checkPaths},
    StepBeginning{"Check whether the target platform is installed.", StepKind::checkInstance},
    StepBeginning{"Check whether platform is running.", StepKind::checkApplication},
    StepBeginning{"Check the version of hotfix", StepKind::checkVersions},
    StepBeginning{kOlderFound, StepKind::removeOlder},
    StepBeginning{kProvisioning, StepKind::provision},
    StepBeginning{kRecorded, StepKind::record},
    StepBeginning{kCheckFailed, StepKind::recover},
    StepBeginning{kCollection, StepKind::collectLogs},
};

// What stands between the two; nullopt for another text.
std::optional<std::string> between(std::string_view before, std::string_view text,
                                   std::string_view after) {
  if (!text.starts_with(before) || !text.ends_with(after) ||
      text.size() < before.size() + after.size())
    return std::nullopt;
  text.remove_prefix(before.size());
  text.remove_suffix(after.size());
  return std::string(text);
}

// The same of a line that ends with it; nullopt also where the installer had none.
std::optional<std::string> valueBehind(std::string_view before, std::string_view text) {
  auto value = between(before, text, ".");
  return value == "(null)" ? std::nullopt : value;
}

// The check that failed was the last one that began.
std::optional<Ending> endingOfCheck(StepKind check) {
  switch (check) {
    case StepKind::checkPaths:
      return Ending::unsupportedCharacters;
    case StepKind::checkInstance:
      return Ending::notInstalled;
    case StepKind::checkApplication:
      return Ending::applicationRunning;
    case StepKind::checkVersions:
      return Ending::higherHotfixInstalled;
    default:
      return std::nullopt;
  }
}

bool isPackageLack(std::string_view text) {
  return std::any_of(kPackageLacks.begin(), kPackageLacks.end(),
                     [&](std::string_view lack) { return text.starts_with(lack); });
}

// Whether what goes wrong from the step's beginning on is its own, and not an earlier step's.
bool hasErrorsOfItsOwn(StepKind kind) {
  return kind == StepKind::checkInstance || kind == StepKind::checkVersions ||
         kind == StepKind::provision;
}

// The ending that a line of its own tells.
std::optional<Ending> endingToldBy(std::string_view text) {
  if (text.starts_with(kNoMemory)) return Ending::outOfMemory;
  if (text.starts_with(kUserLost)) return Ending::userNotRestored;
  if (!text.ends_with(kEndsHere)) return std::nullopt;
  return text.starts_with(kSignal) ? Ending::interrupted : Ending::libraryMissing;
}

}  // namespace

void RunReader::add(std::string_view line) {
  ++_lines;
  const auto record = readTraceRecord(line, _year);
  if (record && record->text == kBegin) return begin(*record);
  if (!record || !_state || record->process != _state->run.process) {
    ++_otherLines;
    return;
  }
  take(*record);
}

void RunReader::begin(const TraceRecord& record) {
  if (_state) _otherLines = _lines - 1;
  _state.emplace();
  Run& run = _state->run;
  run.began = record.time;
  run.ended = record.time;
  run.host = record.host;
  run.process = record.process;
  _state->beganAt = record.second;
  start(StepKind::readPackage);
}

void RunReader::take(const TraceRecord& record) {
  Run& run = _state->run;
  ++_state->lines;
  // Each line comes after the one before it, whatever the clock says.
  run.seconds = std::max(run.seconds, secondsBetween(_state->beganAt, record.second, _year));
  run.ended = record.time;
  run.steps.back().seconds = run.seconds - run.steps.back().at;
  if (record.level <= LogLevel::warning && record.text != kUsualWarning) takeProblem(record);
  takeFact(record.text);
  takeStep(record.text);
  takePath(record.text);
}

void RunReader::takeProblem(const TraceRecord& record) {
  Run& run = _state->run;
  const Problem problem{record.level, std::string(record.time), std::string(record.text),
                        run.seconds};
  if (record.level == LogLevel::error) takeEnding(problem);
  if (run.problems.size() < Run::kMostProblems)
    run.problems.push_back(problem);
  else
    ++run.problemsLeftOut;
}

void RunReader::takeEnding(const Problem& problem) {
  UnfinishedRun& state = *_state;
  if (!state.firstError) state.firstError = problem;
  if (!state.packageLack && isPackageLack(problem.text)) state.packageLack = problem;
  std::optional<Ending> told = endingToldBy(problem.text);
  if (!told && problem.text.find(kNotLocked) != std::string::npos) told = Ending::instanceNotLocked;
  if (!told) return;
  state.told = told;
  state.cause = problem;
}

void RunReader::takeFact(std::string_view text) {
  Run& run = _state->run;
  if (!run.rcpHome) run.rcpHome = between("Check the target platform under ", text, ".");
  if (!run.rcpHome && _state->failedCheck) run.rcpHome = valueBehind(kInstanceMade, text);
  if (auto version = valueBehind("Current hotfix version: ", text)) run.packageVersion = version;
  if (auto version = valueBehind("Installed hotfix version: ", text))
    run.installedVersion = version;
}

void RunReader::takeStep(std::string_view text) {
  if (text == kCheckFailed) failCheck();
  for (const StepBeginning& beginning : kBeginnings) {
    if (!text.starts_with(beginning.text)) continue;
    if (hasErrorsOfItsOwn(beginning.kind)) _state->firstError.reset();
    start(beginning.kind);
  }
  if (text == kRecorded) _state->isRecorded = true;
  if (text.starts_with(kCollection)) _state->hasCome = true;
}

// The way from the passed checks to the workflow's passes. Steps without a line of their own are
// known by the instances that are made for them.
void RunReader::takePath(std::string_view text) {
  UnfinishedRun& state = *_state;
  if (text == kChecksPassed) state.hasPassedChecks = true;
  if (text == kChecksPassed || text == kOlderFound) state.instancesToPass = 1;
  if (text == kTwice) state.passesWanted = 2;
  if (state.isUpdated && text == kPrepared) state.isPrepared = true;
  if (state.isUpdated && text.starts_with(kManifestCopied)) startPass();
  if (!text.starts_with(kInstanceMade) || !state.hasPassedChecks || state.isUpdated) return;
  state.isUpdated = state.instancesToPass == 0;
  if (state.isUpdated)
    start(StepKind::updateUntouched);
  else
    --state.instancesToPass;
}

// It is the last one that began.
void RunReader::failCheck() {
  UnfinishedRun& state = *_state;
  const auto ending = endingOfCheck(state.run.steps.back().kind);
  if (!ending) return;
  state.failedCheck = ending;
  if (ending == Ending::notInstalled && state.packageLack)
    state.causeOfCheck = state.packageLack;
  else if (ending == Ending::notInstalled || ending == Ending::higherHotfixInstalled)
    state.causeOfCheck = state.firstError;
}

void RunReader::startPass() {
  UnfinishedRun& state = *_state;
  ++state.passes;
  state.isPrepared = false;
  state.isRecorded = false;
  state.firstError.reset();
  start(StepKind::bringFiles);
}

void RunReader::start(StepKind kind) {
  std::vector<Step>& steps = _state->run.steps;
  if (steps.size() < Run::kMostSteps) steps.push_back({kind, _state->run.seconds, 0});
}

std::optional<Run> RunReader::run() const {
  if (!_state) return std::nullopt;
  const UnfinishedRun& state = *_state;
  Run run = state.run;
  if (state.told) {
    run.ending = *state.told;
    run.cause = state.cause;
  } else if (!state.hasCome) {
    run.ending = state.lines == 0 ? Ending::argumentsMissing : Ending::brokenOff;
  } else if (state.failedCheck) {
    run.ending = *state.failedCheck;
    run.cause = state.causeOfCheck;
  } else if (state.passes < state.passesWanted || !state.isPrepared) {
    run.ending = Ending::manifestNotCopied;
    if (state.passes > 0) run.cause = state.firstError;
  } else if (!state.isRecorded) {
    run.ending = Ending::provisioningFailed;
    run.cause = state.firstError;
  } else {
    run.ending = Ending::installed;
  }
  return run;
}

}  // namespace installer::ctl
