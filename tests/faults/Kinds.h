#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "faults/Learned.h"
#include "faults/Runner.h"

namespace installer::faults {

// What is asked of a run with a fault of some kind.
enum class Judging {
  whole,    // everything
  silent,   // everything but a line that tells why
  again,    // the run ends with the fault; an undisturbed one follows and must end well
  foreign,  // another moved the files: only what lies outside, and how the run ends
};

// What came of one point of a sweep.
struct Outcome {
  std::vector<Violation> violations;
  std::string call;             // the one that was acted on
  std::uint64_t exchanges = 0;  // by an attacker while the program ran
  std::string trace = {};       // as the run left it
};

// One kind of fault: where it can happen, and what happens there. A point is a call by its number,
// save where points() counts something else.
struct Kind {
  std::string name;
  std::string about;  // one line for people
  std::function<std::vector<long>(const Scenario& scenario, const Learned& learned)> points;
  std::function<Action(const Runner& runner, const Scenario& scenario, long point)> action =
      nullptr;
  Judging judging = Judging::whole;
  // Tries a point in a way of its own, in place of an action.
  std::function<Outcome(const Runner& runner, const Scenario& scenario, const Learned& learned,
                        long point)>
      tried = nullptr;
  // Why the kind can not be tried on this machine; absent for one that always can.
  std::function<std::optional<std::string>(const Runner& runner)> refused = nullptr;
  // Variables that the program gets for it; nothing for none.
  std::function<std::map<std::string, std::string>(long point)> variables = nullptr;
};

const std::vector<Kind>& kinds();

// The numbers of the calls that are so.
std::vector<long> callsThat(const Learned& learned,
                            const std::function<bool(const LoggedCall& call)>& applies);

}  // namespace installer::faults
