#include "hotfix/driver/Installer.h"

#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <string_view>

#include "base/LibraryLack.h"
#include "driver/Checks.h"
#include "driver/InstallPaths.h"
#include "driver/LauncherWait.h"
#include "driver/LeftOverItems.h"
#include "driver/MemoryLack.h"
#include "driver/PackageLoader.h"
#include "driver/RunState.h"
#include "driver/WorkFolders.h"
#include "hotfix/driver/InstanceLock.h"
#include "hotfix/platform/ToldOnce.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/FileManager.h"
#include "platform/Interruption.h"
#include "platform/Log.h"

namespace installer {

namespace {

constexpr const char* kUsage =
    "Usage: HotfixInstaller <pathToInstallPackage> <pathToInstallDestination> "
    "[-rcpdata <pathToRcpData>]\n";

// The mirrored trace of one run.
class Trace {
 public:
  Trace() = default;
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;
  ~Trace() {
    if (_descriptor && isStillWanted()) InstallUtil::closeTraceFile(*_descriptor);
  }

  void open() {
    if (InstallUtil::shouldWriteTraces()) _descriptor = InstallUtil::openTraceFile();
    _isBegun = true;
  }
  // Whether the run has got behind the opening, and whether that gave it a file.
  bool isBegun() const { return _isBegun; }
  bool isOpen() const { return _descriptor.value_or(-1) != -1; }

 private:
  static bool isStillWanted() {
    try {
      return InstallUtil::shouldWriteTraces();
    } catch (const std::exception&) {  // no memory, or not the library that the list needs now
      return true;                     // as it was at the start
    }
  }

  std::optional<int> _descriptor;  // nullopt when no trace is wanted, -1 when it cannot be had
  bool _isBegun = false;
};

std::optional<std::string> chooseRcpData(const std::vector<std::string>& arguments,
                                         const std::optional<std::string>& rcpHome) {
  if (arguments.size() > 4 && arguments[3] == "-rcpdata") {
    log(LogLevel::info, "Caller specified rcpdata");
    return arguments[4];
  }
  log(LogLevel::info, "Caller didn't specify rcpdata, use rcp/systemdata");
  if (!rcpHome) return std::nullopt;
  return InstanceLayout::defaultRcpData(*rcpHome);
}

// Such a folder is worked on, but nothing in it is handed over: the link's owner could have turned
// it anywhere.
void warnOfForeignLink(const std::string& rcpData) {
  FileManager& files = *Platform::current().files;
  if (files.isDirectory(rcpData) && !files.mayEnter(rcpData))
    log(LogLevel::warning,
        "The rcp data folder {} can not be entered, or only through another user's link: leave its "
        "files alone.",
        rcpData);
}

// Keeps other runs from every instance that this one may change; nullopt when the package does not
// tell.
std::optional<InstanceLock> lockInstances() {
  const RunState& state = runState();
  if (!state._rcpHome) return std::nullopt;
  return InstanceLock(*state._rcpHome, state._rcpHomeOfWorkflow.value_or(*state._rcpHome));
}

// Whether another run may be at work there, so that this one has to end before it looks. Of a home
// that is closed to us the checks tell; nothing is installed there.
bool mayBeShared(const InstanceLock& lock) {
  return lock.refusal() && lock.refusal()->code != FileError::kClosed;
}

void waitForLaunchersLeftBehind(const std::string& rcpHome) {
  waitForLauncherLeftBehind(rcpHome);
  const std::optional<std::string>& other = runState()._rcpHomeOfWorkflow;
  if (other && other != rcpHome) waitForLauncherLeftBehind(*other);
}

bool installPackage(const std::vector<std::string>& arguments) {
  const RunState& state = runState();
  WorkFolders folders;
  folders.holdPackage(state._pathToInstallPackage);
  loadPackage();
  const std::optional<std::string>& rcpHome = state._rcpHome;
  const std::optional<std::string> rcpData = chooseRcpData(arguments, rcpHome);
  if (rcpHome) folders.holdInstance(*rcpHome);
  if (state._rcpHomeOfWorkflow) folders.holdInstance(*state._rcpHomeOfWorkflow);
  if (rcpData) {
    folders.holdData(*rcpData);
    warnOfForeignLink(*rcpData);
  }
  // First of all: what another run has at work in the bundle is not the application, and what the
  // checks find must hold until the end of the run.
  const std::optional<InstanceLock> lock = lockInstances();
  if (lock && mayBeShared(*lock)) return false;
  // The run that was waited for may have sent an error, which would stand beside our status.
  if (lock && lock->hasWaited()) InstallUtil::initInternalPasteboard(true);
  if (rcpHome) waitForLaunchersLeftBehind(*rcpHome);
  removeLeftOverItems(rcpData);
  const std::optional<std::string> checked = rcpHomePassingChecks();
  const bool isOurs = !lock || !lock->refusal();
  const bool installed = checked && isOurs && runSuccessPath(*checked, rcpData);
  if (!checked) runFailurePath(rcpHome, rcpData);
  runLogCollection(rcpHome, rcpData);
  return installed;
}

bool run(const std::vector<std::string>& arguments) {
  log(LogLevel::info, "Begin to install hotfix.");
  InstallUtil::initInternalPasteboard(true);
  if (arguments.size() < 3) {
    (void)std::fputs(kUsage, stderr);  // the status tells it too
    return false;
  }
  runState() = RunState();
  runState()._pathToInstallPackage = arguments[1];
  runState()._pathToInstallDestination = arguments[2];
  return installPackage(arguments);
}

// A line so short needs no memory. Standard error is for the runs that have no trace.
void tellOfMemory(const Trace& trace) {
  const char* const line = trace.isBegun() ? kNoMemoryToGoOn : kNoMemoryToBegin;
  Platform::current().log->write(LogLevel::error, line);
  if (!trace.isOpen()) tellOfMemoryWithoutTrace(line);
}

// The library's own words, which name it.
void tellOfLibrary(const xml::LibraryLack& lack, const Trace& trace) {
  log(LogLevel::error, "{}. The installation ends here.", lack.what());
  if (!trace.isOpen()) fmt::print(stderr, "HotfixInstaller: {}.\n", lack.what());
}

// For an end on the way no error is sent: the record's reader has none for what whoever sent the
// signal knows, nor for what the machine lacks.
bool runToAnEnd(const std::vector<std::string>& arguments, Trace& trace) {
  try {
    trace.open();
    const bool installed = run(arguments);
    checkInterruption();
    return installed;
  } catch (const Interrupted& interrupted) {
    log(LogLevel::error, "Asked to end by {}. The installation ends here.", interrupted.cause);
  } catch (const xml::LibraryLack& lack) {
    tellOfLibrary(lack, trace);
  }
  return false;
}

}  // namespace

int runInstaller(const std::vector<std::string>& arguments) {
  const ToldOnce lines;
  Trace trace;
  try {
    return runToAnEnd(arguments, trace) ? 0 : 1;
  } catch (const std::bad_alloc&) {
    tellOfMemory(trace);
    return 1;
  }
}

}  // namespace installer
