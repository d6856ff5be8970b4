#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "ctl/Command.h"
#include "ctl/Endings.h"

namespace installer::ctl::install {

// What came of an installation, with the exit status that tells so. Where the installer's error
// record has a code of its own, the status is that code.
struct Outcome {
  int status;
  std::string_view name;     // for programs
  std::string_view meaning;  // no capital letter, no full stop
  std::string_view remedy;   // what to do now, in sentences
};

// Of a run of the installer.
Outcome outcomeOf(Ending ending);
// Of one that failed and left nothing that tells why.
extern const Outcome kUntold;

// Those for which no installer is started.
extern const Outcome kAnotherAtWork;
extern const Outcome kRefusedByLint;
extern const Outcome kNotRoot;
extern const Outcome kNoPackage;
extern const Outcome kNoInstaller;
extern const Outcome kNotKept;

// The outcome of that name; nullopt for a name that none has.
std::optional<Outcome> outcomeNamed(std::string_view name);

// Every status that is told so.
std::span<const ExitStatus> statuses();

}  // namespace installer::ctl::install
