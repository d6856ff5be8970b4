#include "ctl/remove/Removal.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "ctl/QuietPlatform.h"
#include "ctl/remove/InstanceUser.h"
#include "driver/LauncherWait.h"
#include "driver/LeftOverItems.h"
#include "driver/RunState.h"
#include "driver/WorkFolders.h"
#include "hotfix/driver/InstanceLock.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/platform/ToldOnce.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/EntryFacts.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Interruption.h"
#include "platform/Log.h"
#include "platform/Reported.h"
#include "platform/overlay/KeptOutput.h"
#include "workflow/HotfixRemoval.h"

namespace installer::ctl {

namespace {

// The platform's log with an ear for errors.
class HeardLog : public SystemLog {
 public:
  explicit HeardLog(SystemLog& log) : _log(log) {}

  void write(LogLevel level, std::string_view message) override {
    _log.write(level, message);
    const bool isKnown = std::find(errors.begin(), errors.end(), message) != errors.end();
    if (level == LogLevel::error && !isKnown) errors.emplace_back(message);
  }
  int addFile(int descriptor) override { return _log.addFile(descriptor); }
  void removeFile(int descriptor) override { _log.removeFile(descriptor); }

  std::vector<std::string> errors;

 private:
  SystemLog& _log;
};

// The platform in force with other ears, and for the instance's own user, for this object's
// lifetime.
class RemovalPlatform {
 public:
  explicit RemovalPlatform(const std::string& rcpHome)
      : _users(*Platform::current().users, rcpHome), _platform(Platform::current()) {
    _platform.log = &_log;
    _platform.users = &_users;
  }

  std::vector<std::string> takeErrors() { return std::move(_log.errors); }

 private:
  HeardLog _log{*Platform::current().log};
  InstanceUser _users;
  Platform _platform;
  ScopedPlatform _scope{_platform};
};

InstanceReport lookAt(const std::string& rcpHome) {
  QuietPlatform quiet;
  return reportOn({rcpHome, "argument"}, false, quiet);
}

// What manifests lack is no line of a removal.
template <class Question>
auto quietly(Question question) {
  const QuietPlatform quiet;
  return question();
}

class Removal {
 public:
  Removal(const RemovalRequest& request, std::string rcpHome)
      : _request(request), _home(std::move(rcpHome)) {
    _report.rcpData = request.rcpData.value_or(InstanceLayout::defaultRcpData(_home));
    _report.before.place = {_home, "argument"};
  }

  RemovalReport run() {
    try {
      work();
    } catch (const Interrupted& interrupted) {
      log(LogLevel::error, "Asked to end by {}. The removal ends here.", interrupted.cause);
      endInterrupted(interrupted.cause);
    }
    return std::move(_report);
  }

 private:
  void work() {
    _folders.holdInstance(_home);
    _folders.holdData(_report.rcpData);
    if (!takeLock()) return;
    // What it finds must hold until the end.
    const InstanceLock lock(_home);
    if (!mayBegin()) return;
    removeLeftOverItems(_report.rcpData);
    carryOut();
    // What has come to its end is not interrupted any more.
    const HeldInterruptions held;
    if (!_succeeded) handOver();
    _report.after = lookAt(_home);
    judge();
  }

  // Nobody is waited for.
  bool takeLock() {
    FileError error;
    _attempt = Platform::current().files->tryLock(_home, &error);
    if (_attempt.busy)
      return end(RemovalOutcome::atWork, "A run is at work on the instance.",
                 "Run it again when that has ended.");
    if (_attempt.hold || error.code == FileError::kMissing || error.code == FileError::kNoLocks)
      return true;
    return end(RemovalOutcome::notReadable, fmt::format("{}.", error.description), "");
  }

  bool mayBegin() {
    _report.before = lookAt(_home);
    if (_report.before.state == InstanceState::noInstance)
      return end(RemovalOutcome::noInstance, fmt::format("No instance is at \"{}\".", _home),
                 "Name the application bundle, or the rcp home in it.");
    if (_report.before.reason)
      return end(RemovalOutcome::notReadable, fmt::format("{}.", *_report.before.reason), "");
    return isAllowed() && isLeftAlone() && isStopped() && agrees();
  }

  bool isAllowed() {
    const auto facts = entryAt(_home);
    if (!facts || isRootOr(facts->owner, Platform::current().users->effectiveUserId())) return true;
    return end(RemovalOutcome::notAllowed, "The instance belongs to another user.",
               "Run it as root.");
  }

  bool isLeftAlone() {
    if (!isLauncherAtWork(_home)) return true;
    return end(RemovalOutcome::atWork,
               "A launcher that an earlier run left behind is at work on the instance.",
               "Run it again when that has ended.");
  }

  bool isStopped() {
    const std::string application = _report.before.bundle.value_or(_home);
    if (!InstallUtil::checkBundleIsRunning(application)) return true;
    return end(RemovalOutcome::applicationRunning,
               fmt::format("The application is running: \"{}\".", application),
               "Quit it, for every user, and run this again.");
  }

  bool agrees() {
    _report.agreement = agreement();
    if (_report.agreement == Agreement::nothing)
      return end(RemovalOutcome::nothingInstalled, "No hotfix is installed.", "");
    if (_report.agreement == Agreement::agrees || _request.force) return true;
    return end(RemovalOutcome::refused, disagreementText(_report.agreement, _home),
               std::string(meaningOfForce(_report.agreement)));
  }

  void carryOut() {
    _features = quietly([&] { return featuresIn(manifest()); });
    if (_report.agreement == Agreement::manifestMissing ||
        _report.agreement == Agreement::manifestDamaged)
      return forget();
    auto instance = InstanceService::existing(_home, _report.rcpData);
    if (instance) prepare(*instance);
    overlay::KeptOutput kept;
    _succeeded = HotfixRemoval(_home, _report.rcpData, HandOver::everything).uninstallOldHotfix();
    _report.output = kept.take();
  }

  // Whatever came of it, the launcher was root's, and what it made is the user's.
  void handOver() {
    auto instance = InstanceService::existing(_home, _report.rcpData);
    if (instance) instance->updatePermissions(true, std::optional(_report.rcpData));
  }

  void prepare(InstanceService& instance) {
    if (_report.agreement == Agreement::brokenOff)
      (void)instance.copyHotfixUninstallManifest(manifest());  // without it the workflow says so
    // What goes only after a success tells a removal that had none. A record that lacks it counts
    // as one that says the same.
    if (!instance.getInstalledHotfixBundleID())
      instance.saveHotfixSkipRunningCheckProperty(instance.isHotfixInstallWithSkipRunningCheck());
  }

  Agreement agreement() const {
    return quietly([&] { return agreementIn(_home); });
  }

  // The manifest that the launcher gets.
  std::string manifest() const {
    return _report.agreement == Agreement::brokenOff
               ? InstanceLayout::deployed(_home, InstanceLayout::kUpdateManifest)
               : InstanceLayout::uninstallManifest(_home);
  }

  // In the order in which the workflow does it.
  void forget() {
    auto instance = InstanceService::existing(_home, _report.rcpData);
    if (!instance) return;
    log(LogLevel::warning, "Delete the record of the hotfix, its features stay.");
    instance->updateHotfixVersion(std::nullopt);
    if (exists(manifest())) (void)reported::remove(manifest());  // told where it cannot be
    InstallUtil::removeReceipt(instance->getInstalledHotfixBundleID());
    instance->removeHotfixSkipRunningCheckProperty();
    instance->deleteInstalledHotfixBundleID();
    _report.outcome = RemovalOutcome::forgotten;
    _succeeded = true;
  }

  void judge() {
    if (!_succeeded) return (void)endFailed();
    if (agreement() != Agreement::nothing)
      return (void)end(RemovalOutcome::failed,
                       "The hotfix's record, or its manifest, could not be deleted.",
                       "See to it that the instance can be written, and run it again.");
    if (_report.outcome == RemovalOutcome::removed)
      _report.remainders = quietly([&] { return remaindersIn(_home, _features); });
  }

  // What it had begun is told by what is there now.
  void endInterrupted(const std::string& cause) {
    _report.after = lookAt(_home);
    const Agreement now = agreement();
    const bool asBefore = now == Agreement::agrees || now == Agreement::nothing;
    end(RemovalOutcome::interrupted, fmt::format("Asked to end by {}.", cause),
        asBefore ? "Run it again."
                 : fmt::format("{} {}", disagreementText(now, _home), meaningOfForce(now)));
  }

  bool endFailed() {
    if (exists(InstanceLayout::uninstallManifest(_home)))
      return end(RemovalOutcome::failed, "The launcher could not be given the uninstall manifest.",
                 "See to it that the instance can be written, and run it again.");
    const auto& answer = _report.after->provisioning;
    return end(RemovalOutcome::failed,
               answer && answer->code ? fmt::format("The launcher answered {}.", *answer->code)
                                      : std::string("The launcher left no answer."),
               "Its logs, in the rcp home and in .metadata/.log of the rcp data folder, tell why. "
               "When that is mended run it again with --force, or install the hotfix again.");
  }

  // False, for those who go on only if nothing ends it.
  bool end(RemovalOutcome outcome, std::string reason, std::string remedy) {
    _report.outcome = outcome;
    _report.reason = std::move(reason);
    _report.remedy = std::move(remedy);
    return false;
  }

  const RemovalRequest& _request;
  const std::string _home;
  RemovalReport _report;
  WorkFolders _folders;
  LockAttempt _attempt;
  std::vector<Feature> _features;  // that are to go
  bool _succeeded = false;
};

}  // namespace

RemovalReport removeHotfix(const RemovalRequest& request) {
  noteInterruptions();
  const std::string rcpHome = rcpHomeOf(request.instance);
  RemovalPlatform platform(rcpHome);
  const ToldOnce lines;
  runState() = RunState();
  runState()._rcpHome = rcpHome;
  RemovalReport report = Removal(request, rcpHome).run();
  report.errors = platform.takeErrors();
  return report;
}

}  // namespace installer::ctl
