#include <array>

#include "ctl/install/Outcome.h"
#include "ctl/report/Fleet.h"

namespace installer::ctl::report {

namespace {

struct OtherCause {
  std::string_view name;
  CauseWords words;
};

constexpr std::string_view kInstalledAlready = "installed-already";

// What roll-outs note of hosts on which no installation was begun.
constexpr std::array kOthers{
    OtherCause{kInstalledAlready, {"the hotfix was there already", "Nothing is to be done."}},
    OtherCause{"not-begun",
               {"the roll-out came to its end on the host before the installation",
                "See to what the machine's line names, and roll out again."}},
};

constexpr CauseWords kUnknown{"a cause that this version does not know",
                              "Ask the hotfixctl that it comes from: its manual page tells."};

}  // namespace

bool isFailure(std::string_view cause) {
  return cause != descriptionOf(Ending::installed).name &&
         cause != descriptionOf(Ending::atWork).name && cause != kInstalledAlready;
}

CauseWords wordsOf(std::string_view cause) {
  if (const auto outcome = install::outcomeNamed(cause)) return {outcome->meaning, outcome->remedy};
  for (const OtherCause& other : kOthers)
    if (other.name == cause) return other.words;
  return kUnknown;
}

}  // namespace installer::ctl::report
