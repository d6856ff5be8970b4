#include "ctl/Endings.h"

#include <algorithm>
#include <array>

namespace installer::ctl {

namespace {

// The codes' own words are those of the library's table.
constexpr std::string_view meaningOf(ErrorCode code) {
  for (const ErrorDescription& error : kErrors)
    if (error.code == code) return error.meaning;
  return {};
}

constexpr EndingDescription coded(Ending ending, ErrorCode code, std::string_view name,
                                  std::string_view remedy) {
  return {ending, name, meaningOf(code), remedy, code};
}

constexpr std::string_view kRunAgain = "Run it again.";

constexpr std::array kEndings{
    EndingDescription{Ending::installed, "installed", "the hotfix was installed",
                      "Nothing is to be done.", ErrorCode::none},
    coded(Ending::unsupportedCharacters, ErrorCode::unsupportedCharacters, "unsupported-characters",
          "Rename the folders on the way to the package and to the destination: no path may hold "
          "one of ! \" ' ; \\ # % | = ? or a colon. Then run it again."),
    coded(Ending::notInstalled, ErrorCode::notInstalled, "not-installed",
          "Name the folder that holds the application bundle as the destination. If it does, "
          "compare bundleName, frameworkPath and allowMultiInstance of the package's hotfix.plist "
          "with the instance, and see that its deploy folder holds install.xml."),
    coded(Ending::applicationRunning, ErrorCode::applicationRunning, "application-running",
          "Quit the application, of every user, and run it again."),
    coded(Ending::higherHotfixInstalled, ErrorCode::higherHotfixInstalled,
          "higher-hotfix-installed",
          "If the installed hotfix is the wanted one, nothing is to be done. If the package is "
          "newer, give it a version that is greater as a text: versions compare letter by letter, "
          "so that 1.10 is lower than 1.9."),
    coded(Ending::manifestNotCopied, ErrorCode::manifestNotCopied, "manifest-not-copied",
          "Put the install manifest where the package names it (pathToHotfixManifest, by default "
          "deploy/install.hotfix.xml beside the package), as well-formed XML, and see that the "
          "instance's deploy folder can be written. Then run it again; an older hotfix has been "
          "removed by now."),
    EndingDescription{
        Ending::provisioningFailed, "provisioning-failed",
        "the platform's launcher did not install the hotfix",
        "The launcher's own logs tell why: in the rcp home, and .metadata/.log in the "
        "rcp data folder. Repair the package or its update site and install it; an "
        "older hotfix has been removed by now.",
        ErrorCode::none},
    EndingDescription{Ending::interrupted, "interrupted", "a signal ended the run", kRunAgain,
                      ErrorCode::none},
    EndingDescription{Ending::outOfMemory, "out-of-memory", "the machine had not enough memory",
                      "Run it again when there is more.", ErrorCode::none},
    EndingDescription{
        Ending::libraryMissing, "library-missing", "the XML library could not be loaded",
        "Install the library that the line names, and run it again.", ErrorCode::none},
    EndingDescription{Ending::instanceNotLocked, "instance-not-locked",
                      "the instance could not be kept from other installers",
                      "See why the folder that the line names cannot be locked (who may enter it, "
                      "what file system it is on), and run it again.",
                      ErrorCode::none},
    EndingDescription{Ending::userNotRestored, "user-not-restored",
                      "the installer could not become its own user again", kRunAgain,
                      ErrorCode::none},
    EndingDescription{Ending::argumentsMissing, "arguments-missing",
                      "the installer was started without a package or a destination",
                      "Give it both: HotfixInstaller <package> <destination> [-rcpdata <folder>].",
                      ErrorCode::none},
    EndingDescription{
        Ending::brokenOff, "broken-off", "the run was broken off",
        "Run it again: it waits for a launcher that was left behind, and removes what "
        "was half made.",
        ErrorCode::none},
    EndingDescription{Ending::atWork, "at-work", "the run is at work",
                      "Wait for its end; hotfixctl explain --follow tells its steps.",
                      ErrorCode::none},
};

}  // namespace

std::span<const EndingDescription> endings() {
  return kEndings;
}

const EndingDescription& descriptionOf(Ending ending) {
  return *std::find_if(kEndings.begin(), kEndings.end(),
                       [&](const EndingDescription& one) { return one.ending == ending; });
}

const EndingDescription* descriptionOf(std::int64_t errorCode) {
  const auto* const found =
      std::find_if(kEndings.begin(), kEndings.end(), [&](const EndingDescription& one) {
        return one.code != ErrorCode::none && static_cast<int>(one.code) == errorCode;
      });
  return found == kEndings.end() ? nullptr : found;
}

}  // namespace installer::ctl
