#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "hotfix/base/PropertyList.h"
#include "platform/overlay/Changes.h"
#include "platform/overlay/PlannedPlatform.h"

namespace installer::ctl {

// The installer's command line, and what its launcher would answer.
struct PlanRequest {
  std::string package;
  std::string destination;
  std::optional<std::string> rcpData;
  int assumed = 0;  // the launcher's return code
};

// The version of the hotfix that the instance of that rcp home records as installed. The file alone
// is asked: whoever makes a service of the instance changes things.
[[nodiscard]] std::optional<std::string> recordedVersionOf(const std::string& rcpHome);

// Why it is this bundle that a package is for.
enum class BundleReason {
  none,
  severalInstances,
  registered,
  notRegistered,
  registeredOneIsMissing
};

// One of the checks before an installation.
struct PlannedCheck {
  enum class State { passed, failed, skipped, notReached };
  struct Value {
    std::string name;
    std::optional<std::string> text;
  };

  std::string name;
  State state = State::notReached;
  std::vector<Value> values;  // what it looked at
};

// A run of the installer that was played and not made. What it would have done is kept here: as
// long as the object lives the tree can be asked for contents.
class Plan {
 public:
  // Plays the run as the maker's, above the platform that is in force, which stays as it is.
  Plan(const PlanRequest& request, const overlay::Maker& maker);

  int status = 1;  // of the installer
  std::string output;
  std::vector<overlay::PlannedLine> log;

  BundleReason reason = BundleReason::none;
  std::optional<std::string> registration;  // the file that tells the bundle, where one was asked
  std::optional<std::string> bundle;
  std::optional<std::string> rcpHome;
  std::optional<std::string> rcpHomeOfWorkflow;  // where it is another
  std::vector<PlannedCheck> checks;

  int errorCode = 0;
  std::vector<std::string> errorDetails;

  std::optional<std::string> packageVersion;
  std::optional<std::string> versionBefore;
  std::optional<std::string> versionAfter;

  std::vector<overlay::Change> changes;
  // A launcher that is at work on the instance: the run would wait for its end.
  bool waitsForLauncher = false;

  const PlanRequest& request() const { return _request; }
  const std::vector<overlay::PlannedChild>& children() const { return _platform.noted.planned(); }
  // What was closed to the run. What only the showing of it looks at does not count.
  const std::set<std::string>& unknown() const { return _unknown; }
  // The rcp home that the workflow worked on.
  const std::optional<std::string>& workedOn() const {
    return rcpHomeOfWorkflow ? rcpHomeOfWorkflow : rcpHome;
  }
  overlay::Tree& tree() { return _platform.overlay.tree(); }

 private:
  void play();
  void answerAsLauncher(const Command& command);
  void findBundle();
  void readRecord();
  std::optional<std::string> recordedVersion() const;
  void lookAtProcesses(uid_t user);

  PlanRequest _request;
  overlay::PlannedPlatform _platform;
  std::set<std::string> _unknown;
};

}  // namespace installer::ctl
