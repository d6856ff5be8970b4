#include "ctl/rehearse/Rehearsal.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "ctl/QuietPlatform.h"
#include "ctl/plan/UnifiedDiff.h"
#include "ctl/trace/TraceFile.h"
#include "driver/LauncherWait.h"
#include "hotfix/base/Path.h"
#include "hotfix/driver/Installer.h"
#include "hotfix/formats/RegisterFile.h"
#include "instance/InstanceLayout.h"
#include "platform/AbsolutePath.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Interruption.h"
#include "platform/ProcessSetup.h"
#include "platform/TrustedPath.h"
#include "platform/UserContext.h"
#include "workflow/HotfixPackage.h"

namespace installer::ctl {

namespace {

constexpr std::string_view kTemporary = "/tmp/";

// Thrown where there can be no rehearsal.
struct Lack {
  RehearsalOutcome outcome;
  std::string reason;
};

// The copy, and all that the run needs beside it; gone with the object.
class WorkFolder {
 public:
  explicit WorkFolder(const std::string& folder) {
    std::string reason;
    // From now on it is known by its path.
    const uid_t user = Platform::current().users->effectiveUserId();
    if (const auto distrust = reasonToDistrust(folder, user))
      throw Lack{RehearsalOutcome::notPossible,
                 fmt::format("\"{}\" cannot be trusted: {}", folder, *distrust)};
    const auto made = privately::makeWorkFolder(folder, reason);
    if (!made) throw Lack{RehearsalOutcome::notPossible, reason};
    _path = *made;
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder() {
    if (!_path.empty()) (void)privately::removeWorkFolder(_path);  // nobody is left to tell
  }

  std::string in(std::string_view name) const {
    return path::appendingComponent(_path, std::string(name));
  }
  const std::string& path() const { return _path; }

  // False when something stays.
  bool remove() { return privately::removeWorkFolder(std::exchange(_path, {})); }

  void makeFolder(std::string_view name) const {
    FileError error;
    if (!Platform::current().files->createDirectory(in(name), Intermediates::refuse, std::nullopt,
                                                    &error))
      throw Lack{RehearsalOutcome::notPossible, error.description};
  }

 private:
  std::string _path;
};

// What is there is on a disk, mostly the instance's, whose blocks a copy can share.
std::string usualFolder() {
  return exists(std::string("/var/tmp")) ? "/var/tmp" : "/tmp";
}

// Everywhere that the package says it has something.
std::vector<std::string> placesOf(const std::string& package) {
  std::vector<std::string> places = {package, path::appendingComponent(package, "../deploy")};
  const auto properties = HotfixPackage::properties(package);
  if (!properties) return places;
  const auto locations = HotfixPackage::resolvedFor(package, *properties).locations;
  for (const std::string& place :
       {locations.installManifest, locations.uninstallManifest, locations.customization,
        locations.updateSites, locations.keyStores, locations.extras})
    places.push_back(place);
  return places;
}

// Whether the path is the folder, or below it.
bool isIn(const std::string& folder, const std::string& path) {
  return path == folder || path.starts_with(folder == "/" ? folder : folder + "/");
}

bool namesAnother(const std::string& package, const std::string& bundle) {
  const auto properties = HotfixPackage::properties(package);
  const auto name = properties ? PropertyList::textForKey(*properties, "bundleName") : std::nullopt;
  const auto registered = name ? RegisterFile(*name).getProductPath() : std::nullopt;
  return registered && privately::resolved(*registered) != bundle;
}

class Rehearsal {
 public:
  // `machine` is the platform of the run, and must outlive this.
  Rehearsal(const RehearsalRequest& request, RehearsalReport& report, Platform& machine)
      : _request(request), _report(report), _machine(machine), _home(rcpHomeOf(request.instance)) {}

  void run() {
    if (const auto lack = privately::lack()) throw Lack{RehearsalOutcome::notPossible, *lack};
    lookAtInstance();
    WorkFolder work(folderOfWork());
    try {
      copyInstance(work);
      play(work);
      lookAtResult(work);
    } catch (...) {
      remove(work);
      throw;
    }
    remove(work);
  }

 private:
  void remove(WorkFolder& work) {
    const std::string folder = work.path();
    if (!work.remove()) _report.left = folder;
  }

  static InstanceFacts factsOf(const std::string& rcpHome) {
    QuietPlatform quiet;
    return {reportOn({rcpHome, "argument"}, false, quiet),
            featuresIn(InstanceLayout::installManifest(rcpHome))};
  }

  void lookAtInstance() {
    _attempt = Platform::current().files->tryLock(_home);
    if (_attempt.busy)
      throw Lack{RehearsalOutcome::atWork, "A run is at work on the instance; run it again later"};
    if (isLauncherAtWork(_home))
      throw Lack{RehearsalOutcome::atWork,
                 "A launcher that an earlier run left behind is at work on the instance; run it "
                 "again later"};
    InstanceFacts facts = factsOf(_home);
    if (facts.report.reason) throw Lack{RehearsalOutcome::notReadable, *facts.report.reason};
    if (facts.report.state == InstanceState::noInstance || !facts.report.bundle)
      throw Lack{RehearsalOutcome::noInstance,
                 fmt::format("No instance in an application bundle is at \"{}\"", _home)};
    _bundle = *facts.report.bundle;
    _report.bundle = _bundle;
    _report.before = std::move(facts);
  }

  // A copy in what is copied would be copied, too.
  std::string folderOfWork() const {
    std::string folder = absolutePath(_request.folder.value_or(usualFolder()));
    std::vector<std::string> copied = {_bundle};
    if (hasOtherData()) copied.push_back(*_request.rcpData);
    for (const std::string& one : copied)
      if (isIn(privately::resolved(one), privately::resolved(folder)))
        throw Lack{RehearsalOutcome::notPossible,
                   fmt::format("\"{}\" lies in what is copied, \"{}\"", folder, one)};
    return folder;
  }

  void copyInstance(const WorkFolder& work) {
    for (const char* folder : {"copy", "tmp", "none"}) work.makeFolder(folder);
    _copied = copy(_bundle, copyIn(work));
    // Who is at work there now changes nothing of the copy.
    _attempt = LockAttempt();
    if (hasOtherData()) (void)copy(*_request.rcpData, work.in("data"));  // it is not compared
  }

  static privately::Copied copy(const std::string& from, const std::string& to) {
    std::string reason;
    auto copied = privately::copyTree(from, to, reason);
    if (!copied) throw Lack{RehearsalOutcome::notPossible, "The copy: " + reason};
    return std::move(*copied);
  }

  std::string copyIn(const WorkFolder& work) const {
    return path::appendingComponent(work.in("copy"), path::lastComponent(_bundle));
  }

  // One that is missing cannot be made, and one in the bundle is copied with it.
  bool hasOtherData() const {
    if (!_request.rcpData || !Platform::current().files->isDirectory(*_request.rcpData))
      return false;
    return !isIn(privately::resolved(_bundle), privately::resolved(*_request.rcpData));
  }

  privately::View viewOf(const WorkFolder& work) const {
    privately::View view{work.path(), {}, work.in("tmp"), {}, work.in("output")};
    const std::string bundle = privately::resolved(_bundle);
    // The second one is seen where both have something: the data folder can be around the bundle.
    if (hasOtherData())
      view.replaced.emplace_back(privately::resolved(*_request.rcpData), work.in("data"));
    view.replaced.emplace_back(bundle, copyIn(work));
    const std::string& registrations = Platform::current().paths.registrations;
    if (namesAnother(_request.package, bundle) && exists(registrations))
      view.replaced.emplace_back(privately::resolved(registrations), work.in("none"));
    std::vector<std::string> needed = placesOf(absolutePath(_request.package));
    needed.push_back(bundle);
    needed.push_back(absolutePath("."));
    if (_request.rcpData) needed.push_back(*_request.rcpData);
    for (const std::string& place : needed) {
      std::string path = privately::resolved(place);
      if (path.starts_with(kTemporary)) view.needed.push_back(std::move(path));
    }
    return view;
  }

  std::vector<std::string> commandLine() const {
    std::vector<std::string> line = {"HotfixInstaller", _request.package,
                                     path::deletingLastComponent(_bundle)};
    if (_request.rcpData) line.insert(line.end(), {"-rcpdata", *_request.rcpData});
    return line;
  }

  void play(const WorkFolder& work) {
    std::string reason;
    const auto end = privately::run(
        viewOf(work),
        [&] {
          const ScopedPlatform loud(_machine);
          setUpProcess();
          return runInstaller(commandLine());
        },
        reason);
    checkInterruption();
    if (!end) throw Lack{RehearsalOutcome::notPossible, reason};
    if (end->signal)
      throw Lack{RehearsalOutcome::notPossible,
                 fmt::format("The installer was ended by {}", *end->signal)};
    _report.status = end->status;
    _report.outcome =
        end->status == 0 ? RehearsalOutcome::installed : RehearsalOutcome::notInstalled;
  }

  void lookAtResult(const WorkFolder& work) {
    const std::string copy = copyIn(work);
    FileManager& files = *Platform::current().files;
    _report.after = factsOf(copy + _home.substr(_bundle.size()));
    _report.output = files.read(work.in("output")).value_or("");
    FileError error;
    const std::string trace = path::lastComponent(Platform::current().paths.traceFile);
    if (auto found = readTrace(
            {path::appendingComponent(work.in("tmp"), trace), FinalLink::refuse, {}}, error))
      _report.run = std::move(found->run);
    compare(copy);
  }

  void compare(const std::string& copy) {
    std::string reason;
    auto differences = privately::differences(_bundle, copy, reason);
    if (!differences) throw Lack{RehearsalOutcome::notReadable, reason};
    for (privately::Difference& one : *differences) {
      auto text = textOf(one, copy);
      if (privately::isAsCopied(_copied, _bundle, one.path))
        _report.changes.push_back({std::move(one), std::move(text)});
      else
        _report.changedMeanwhile.push_back(std::move(one.path));
    }
  }

  std::optional<std::string> textOf(const privately::Difference& difference,
                                    const std::string& copy) const {
    const auto isFile = [](const std::optional<overlay::Status>& status) {
      return !status || status->kind == EntryKind::file;
    };
    if (!_request.withDifferences || !isFile(difference.before) || !isFile(difference.after))
      return std::nullopt;
    FileManager& files = *Platform::current().files;
    const auto bytesIn = [&](const std::string& tree, bool isThere) {
      return isThere ? files.read(path::appendingComponent(tree, difference.path))
                     : std::optional<std::string>("");
    };
    const auto before = bytesIn(_bundle, difference.before.has_value());
    const auto after = bytesIn(copy, difference.after.has_value());
    auto text = before && after ? unifiedDiff(*before, *after) : std::nullopt;
    return text && !text->empty() ? text : std::nullopt;
  }

  const RehearsalRequest& _request;
  RehearsalReport& _report;
  Platform& _machine;
  const std::string _home;
  std::string _bundle;
  LockAttempt _attempt;
  privately::Copied _copied;  // of the bundle
};

}  // namespace

RehearsalReport rehearse(const RehearsalRequest& request) {
  noteInterruptions();
  RehearsalReport report;
  report.ownersAreKept = Platform::current().users->effectiveUserId() == kRoot;
  // A line of ours would also open the machine's log, and the run would have it open.
  Platform machine = Platform::current();
  const QuietPlatform quiet;
  try {
    Rehearsal(request, report, machine).run();
  } catch (const Lack& lack) {
    report.outcome = lack.outcome;
    report.reason = lack.reason;
  } catch (const Interrupted& interrupted) {
    report.outcome = RehearsalOutcome::interrupted;
    report.reason = fmt::format("Asked to end by {}", interrupted.cause);
  }
  return report;
}

}  // namespace installer::ctl
