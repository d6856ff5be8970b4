#include "ctl/install/Outcome.h"

namespace installer::ctl::install {

namespace {

enum Status {
  kInstalled = 0,
  kInternal = 1,
  kProvisioningFailed = 2,
  kUnsupportedCharacters = 3,
  kManifestNotCopied = 4,
  kInterrupted = 5,
  kApplicationRunning = 6,
  kHigherHotfixInstalled = 7,
  kNotInstalled = 8,
  kBusy = 9,
  kRefused = 10,
  kUserIsNotRoot = 11,
  kPackageMissing = 12,
  kInstallerMissing = 13,
  kCannotKeep = 14,
};

constexpr ExitStatus kStatuses[] = {
    {kInstalled, "the hotfix was installed"},
    {kInternal,
     "the installer failed for a reason of the machine's: no memory, no XML library, an instance "
     "that cannot be locked, or one that it could not tell"},
    {kProvisioningFailed, "the platform's launcher did not install the hotfix"},
    {kUnsupportedCharacters, "a path holds a character that is not supported"},
    {kManifestNotCopied, "the install manifest is missing or could not be copied"},
    {kInterrupted, "a signal, the time limit or a kill ended the run"},
    {kApplicationRunning, "the application is running"},
    {kHigherHotfixInstalled, "a higher hotfix is installed"},
    {kNotInstalled, "there is no instance"},
    {kBusy, "another installation is at work on this machine"},
    {kRefused, "lint finds errors in the package"},
    {kUserIsNotRoot, "only root can install"},
    {kPackageMissing, "the package is missing, cannot be read, or is no folder"},
    {kInstallerMissing, "the installer is missing or cannot be started"},
    {kCannotKeep, "the run could not be kept, and was not begun"},
};

int statusOf(Ending ending) {
  switch (ending) {
    case Ending::installed:
      return kInstalled;
    case Ending::provisioningFailed:
      return kProvisioningFailed;
    case Ending::unsupportedCharacters:
      return kUnsupportedCharacters;
    case Ending::manifestNotCopied:
      return kManifestNotCopied;
    case Ending::interrupted:
    case Ending::brokenOff:
      return kInterrupted;
    case Ending::applicationRunning:
      return kApplicationRunning;
    case Ending::higherHotfixInstalled:
      return kHigherHotfixInstalled;
    case Ending::notInstalled:
      return kNotInstalled;
    case Ending::atWork:
      return kBusy;
    default:
      return kInternal;
  }
}

}  // namespace

Outcome outcomeOf(Ending ending) {
  const EndingDescription& description = descriptionOf(ending);
  return {statusOf(ending), description.name, description.meaning, description.remedy};
}

constexpr Outcome kUntold{
    kInternal, "untold", "the installer failed and did not tell why",
    "Its output and what there is of its trace are in the folder of the kept run."};

constexpr Outcome kAnotherAtWork{
    kBusy, "another-at-work", "another installation is at work on this machine",
    "Wait for its end, or give --wait the seconds that may be waited."};
constexpr Outcome kRefusedByLint{
    kRefused, "refused-by-lint", "lint finds errors in the package",
    "hotfixctl lint tells them, with what to do about each. Without --lint the package is taken as "
    "it is."};
constexpr Outcome kNotRoot{kUserIsNotRoot, "not-root", "only root can install",
                           "Run it as root, with sudo for example."};
constexpr Outcome kNoPackage{kPackageMissing, "no-package", "there is no package that can be read",
                             "Name the folder of the package."};
constexpr Outcome kNoInstaller{
    kInstallerMissing, "no-installer", "the installer is missing or cannot be started",
    "Install HotfixInstaller beside hotfixctl, or name it with --installer."};
constexpr Outcome kNotKept{
    kCannotKeep, "not-kept", "the run could not be kept, and was not begun",
    "See to the folder that the line names: it has to be root's, nobody else may write there, and "
    "its disk needs room."};

std::optional<Outcome> outcomeNamed(std::string_view name) {
  for (const EndingDescription& ending : endings())
    if (ending.name == name) return outcomeOf(ending.ending);
  for (const Outcome& outcome :
       {kUntold, kAnotherAtWork, kRefusedByLint, kNotRoot, kNoPackage, kNoInstaller, kNotKept})
    if (outcome.name == name) return outcome;
  return std::nullopt;
}

std::span<const ExitStatus> statuses() {
  return kStatuses;
}

}  // namespace installer::ctl::install
