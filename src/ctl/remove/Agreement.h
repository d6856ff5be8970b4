#pragma once

#include <string>
#include <string_view>

namespace installer::ctl {

// How an instance's record of a hotfix and what its removal needs fit together.
enum class Agreement {
  agrees,           // a hotfix is recorded, and the manifest that takes it out is there
  nothing,          // neither of the two
  notRecorded,      // the manifest is there, and no hotfix is recorded
  brokenOff,        // a removal had begun: its manifest is the launcher's by now
  manifestMissing,  // a hotfix is recorded, and nothing takes it out
  manifestDamaged,  // what should take it out cannot be read as a manifest
};

// Asked of the files alone.
Agreement agreementIn(const std::string& rcpHome);

// For programs.
std::string_view nameOf(Agreement agreement);
// What is wrong, in a sentence with the manifest's path; and what going on all the same would mean.
// Empty for the first two.
std::string disagreementText(Agreement agreement, const std::string& rcpHome);
std::string_view meaningOfForce(Agreement agreement);

}  // namespace installer::ctl
