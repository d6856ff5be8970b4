#include "ctl/install/Installation.h"

#include <fmt/format.h>

#include <ctime>
#include <utility>

#include "ctl/Output.h"
#include "ctl/QuietPlatform.h"
#include "ctl/install/InstallerProgram.h"
#include "ctl/install/Orphans.h"
#include "ctl/lint/Lint.h"
#include "ctl/plan/PlanJson.h"
#include "ctl/trace/TraceFile.h"
#include "hotfix/base/Path.h"
#include "platform/FileManager.h"
#include "platform/Interruption.h"
#include "platform/KeptRunsFolder.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer::ctl::install {

namespace {

constexpr mode_t kPrivate = 0600;

FileManager& files() {
  return *Platform::current().files;
}

installer::Command commandOf(const std::string& program, const PlanRequest& request) {
  installer::Command command{program, {request.package, request.destination}};
  if (request.rcpData)
    command.arguments.insert(command.arguments.end(), {"-rcpdata", *request.rcpData});
  return command;
}

}  // namespace

Result Installation::run() {
  const QuietPlatform quiet;
  _result.request = _settings.request;
  _result.began = isoTime(std::time(nullptr));
  try {
    if (mayBegin()) install();
  } catch (const Interrupted& interrupted) {
    _result.interruption = Interruption{interrupted.cause};
    (void)refuse(outcomeOf(Ending::interrupted),
                 fmt::format("{} came before the installer was started", interrupted.cause));
  }
  return std::move(_result);
}

// In this order: the first lack is told, and nothing has been made by then.
bool Installation::mayBegin() {
  if (Platform::current().users->effectiveUserId() != kRoot)
    return refuse(kNotRoot, std::string(kNotRoot.meaning));
  if (!hasPackage()) return false;
  const auto program = _settings.installer ? _settings.installer : installerProgram();
  if (!program) return refuse(kNoInstaller, "there is no HotfixInstaller beside this program");
  if (!isProgram(*program))
    return refuse(kNoInstaller, fmt::format("there is no installer \"{}\"", *program));
  _program = *program;
  if (_settings.lint && !passesLint()) return false;
  noteInterruptions();
  return takeTurn(keptRunsFolder());
}

bool Installation::hasPackage() {
  const std::string& package = _settings.request.package;
  FileError error;
  if (!files().exists(package, &error))
    return refuse(kNoPackage, error.code == FileError::kMissing
                                  ? fmt::format("there is no package \"{}\"", package)
                                  : error.description);
  if (files().isDirectory(package)) return true;
  return refuse(kNoPackage, fmt::format("a package is a folder, and \"{}\" is none", package));
}

bool Installation::passesLint() {
  const auto answer = lint::lint({_settings.request.package, std::nullopt, std::nullopt, {}});
  if (const auto* reason = std::get_if<lint::CannotLook>(&answer))
    return refuse(kNoPackage, reason->reason);
  const auto& findings = std::get<lint::Findings>(answer);
  _result.lint =
      LintCounts{findings.count(lint::Level::error), findings.count(lint::Level::warning)};
  if (_result.lint->errors == 0) return true;
  return refuse(
      kRefusedByLint,
      fmt::format("lint finds {} {} in \"{}\"; hotfixctl lint tells them", _result.lint->errors,
                  _result.lint->errors == 1 ? "error" : "errors", _settings.request.package));
}

bool Installation::takeTurn(const std::string& folder) {
  const Deadline deadline(_settings.wait);
  NoTurn lack;
  _runs = KeptRuns::takeTurn(folder, deadline, lack);
  if (!_runs && !lack.isBusy) return refuse(kNotKept, lack.reason);
  if (!_runs) return refuse(kAnotherAtWork, std::string(kAnotherAtWork.meaning));
  const auto orphan = settleOrphans(*_runs, deadline);
  if (!orphan) return true;
  return refuse(kAnotherAtWork,
                fmt::format("the installer of the run \"{}\" is still at work", *orphan));
}

void Installation::install() {
  Plan plan(_settings.request, overlay::rootAsMaker());
  checkInterruption();
  _result.bundle = plan.bundle;
  _result.rcpHome = plan.workedOn();
  _result.packageVersion = plan.packageVersion;
  _result.versionBefore = plan.versionBefore;
  _result.versionAfter = plan.versionBefore;
  if (begin(plan)) work(plan);
}

bool Installation::begin(Plan& plan) {
  std::string reason;
  _result.keptRun = _runs->begin(plan.bundle, reason);
  if (!_result.keptRun) return refuse(kNotKept, std::move(reason));
  _result.installer = InstallerProcess{_program, std::nullopt, {}, ""};
  if (keep(kPlanFile, ctl::textOf(planJson(plan, false))) && keepBeginning()) return true;
  return refuse(kNotKept, *_result.keptLack);
}

// What the next one finds when this process does not come to its end.
bool Installation::keepBeginning() {
  _result.outcome = outcomeOf(Ending::atWork);
  _result.isOver = false;
  return keep(kResultFile, ctl::textOf(documentOf(_result)));
}

// The first lack counts.
bool Installation::keep(const char* name, std::string_view text) {
  FileError error;
  const std::string path = path::appendingComponent(*_result.keptRun, name);
  if (files().write(path, text, ReplacedFile::forget, kPrivate, &error)) return true;
  if (!_result.keptLack) _result.keptLack = error.description;
  return false;
}

void Installation::work(Plan& plan) {
  StartLack lack;
  const std::string output = path::appendingComponent(*_result.keptRun, kOutputFile);
  const auto child = startWatched(commandOf(_program, _settings.request), output, lack);
  if (child) return watch(*child, phasesOf(plan));
  const std::string& what = lack.isOutput ? output : _program;
  const char* const done = lack.isOutput ? "created" : "started";
  (void)refuse(lack.isOutput ? kNotKept : kNoInstaller,
               fmt::format("\"{}\" cannot be {}: {}", what, done, lack.reason));
}

// From here on signals are the installer's; everything else is brought to its end.
void Installation::watch(WatchedChild& child, std::size_t phases) {
  const HeldInterruptions held;
  _result.installer->number = child.process();
  (void)keepBeginning();  // the one from before the start stays
  Progress progress(_settings.progress, _out, _columns, phases);
  Supervisor supervisor(child, _settings.limits, progress, plannedAt(*_result.keptRun));
  const WatchedEnd end = supervisor.watch();
  _result.time = supervisor.time();
  _result.interruption = supervisor.interruption();
  conclude(end);
  _runs->makeRoom(_settings.retention, *_result.keptRun);
  progress.end(_result.outcome);
}

void Installation::conclude(const WatchedEnd& end) {
  const Evidence evidence = keepEvidence(*_result.keptRun, _result.installer->number);
  _result.outcome = outcomeOf(end, evidence, _result.interruption.has_value());
  _result.isOver = true;
  _result.take(evidence);
  _result.installer->end = end;
  _result.installer->output = outputIn(*_result.keptRun);
  if (_result.rcpHome) _result.versionAfter = recordedVersionOf(*_result.rcpHome);
  if (!keep(kResultFile, ctl::textOf(documentOf(_result)))) complain(*_result.keptLack);
}

// Whatever was kept of a run that does not begin goes again.
bool Installation::refuse(const Outcome& outcome, std::string reason) {
  const HeldInterruptions held;
  if (_result.keptRun) (void)files().remove(*_result.keptRun);  // the next one looks again
  _result.keptRun.reset();
  _result.keptLack.reset();
  _result.installer.reset();
  _result.isOver = true;
  _result.outcome = outcome;
  complain(reason);
  _result.cause = std::move(reason);
  return false;
}

}  // namespace installer::ctl::install
