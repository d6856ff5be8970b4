#pragma once

#include <set>
#include <string>
#include <vector>

#include "faults/Allowed.h"
#include "faults/Runner.h"

namespace installer::faults {

// One call of a run in which nothing went wrong.
struct LoggedCall {
  std::string text;  // for people
  std::string path;  // what it is made on; "" for nothing
  std::string otherPath;
  const CallForm* form = nullptr;
  Effect effect = Effect::looking;
  std::vector<int> errors;
  std::uint64_t size = 0;  // bytes to be written, 0 for a call that writes none
};

// What is known of a scenario when nothing goes wrong.
struct Learned {
  std::vector<LoggedCall> calls;
  long allocations = 0;
  Allowed moments;                   // what every file may be when a run has been broken off
  Allowed ends;                      // what it may be after a run on what a broken one left
  Files files;                       // after the run, without stamps
  std::set<std::string> complaints;  // the trace's lines of warnings and errors
};

// Lets the scenario run undisturbed; a violation when it does not end as it says of itself.
std::vector<Violation> learn(const Runner& runner, const Scenario& scenario, Learned& learned);

}  // namespace installer::faults
