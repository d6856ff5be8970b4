#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "faults/Scenario.h"
#include "faults/Tracee.h"
#include "faults/World.h"
#include "support/ChildScript.h"

namespace installer::faults {

// What is done at a call, numbered from 1, before the program makes it.
using Action = std::function<void(Tracee& program, const Call& call, long number)>;

// What a run came to.
struct Run {
  End end;
  bool othersEnded = true;  // whether its children were through in time
  Files files;              // as they are then
  std::vector<test::ChildRecord> launches;
};

// Runs the program on what is in the world.
class Runner {
 public:
  Runner(const World& world, std::uint64_t distanceOfMain)
      : _world(world), _distanceOfMain(distanceOfMain) {}

  // Puts the scenario's files and children in place.
  void prepare(const Scenario& scenario) const;
  // With more variables around it than environment() has. What is to be done when the program has
  // ended is done before anybody looks at the files.
  Run run(
      const Scenario& scenario, const Action& action,
      const std::map<std::string, std::string>& variables = {},
      const std::function<void()>& atEnd = [] {}) const;

  const World& world() const { return _world; }

 private:
  const World& _world;
  std::uint64_t _distanceOfMain;
};

// An action for a run that nothing is done to.
inline void letBe(Tracee& program, const Call& /*call*/, long /*number*/) {
  program.letGo();
}

}  // namespace installer::faults
