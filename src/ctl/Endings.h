#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "hotfix/util/ErrorCode.h"

namespace installer::ctl {

// How a run of the installer can end, as far as it can be told afterwards.
enum class Ending {
  installed,
  unsupportedCharacters,
  notInstalled,
  applicationRunning,
  higherHotfixInstalled,
  manifestNotCopied,
  provisioningFailed,
  interrupted,
  outOfMemory,
  libraryMissing,
  instanceNotLocked,
  userNotRestored,
  argumentsMissing,
  brokenOff,
  atWork,
};

struct EndingDescription {
  Ending ending;
  std::string_view name;     // for programs
  std::string_view meaning;  // what came of the run: no capital letter, no full stop
  std::string_view remedy;   // what to do now, in sentences
  ErrorCode code;            // what the error record then says
};

// Every ending once.
std::span<const EndingDescription> endings();

const EndingDescription& descriptionOf(Ending ending);
// That of an error code but 0, which many endings share. Null for a number that is never sent.
const EndingDescription* descriptionOf(std::int64_t errorCode);

}  // namespace installer::ctl
