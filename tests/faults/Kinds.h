#pragma once

#include <string>
#include <vector>

#include "faults/Learned.h"
#include "faults/Runner.h"

namespace installer::faults {

// One kind of fault: at which calls it can happen, and what happens there.
struct Kind {
  std::string name;
  std::string about;  // one line for people
  std::function<bool(const LoggedCall& call)> applies;
  std::function<Action(long point)> action;
  bool silences = false;  // the trace can not be written either
  bool ends = false;      // the run ends with the fault, and an undisturbed one has to follow
};

const std::vector<Kind>& kinds();

// nullptr when there is none of that name.
const Kind* kindNamed(const std::string& name);

}  // namespace installer::faults
