#include "faults/Runner.h"

#include "support/ChildFolder.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

void Runner::prepare(const Scenario& scenario) const {
  _world.fill(scenario.files);
  _world.script(scenario.scripts);
  if (!scenario.running.empty()) _world.startIdle(scenario.running);
}

Run Runner::run(const Scenario& scenario, const Action& action,
                const std::map<std::string, std::string>& variables,
                const std::function<void()>& atEnd) const {
  Run run;
  auto around = environment();
  around.insert(variables.begin(), variables.end());
  {
    Tracee program({_world.root(), test::kProgramInRoot, scenario.arguments, around},
                   _distanceOfMain);
    long number = 0;
    while (const auto call = program.next()) action(program, *call, ++number);
    run.end = program.end();
  }
  atEnd();
  // What runs all the while has to be there for a second run.
  run.othersEnded = !scenario.running.empty() || World::waitForOthers();
  run.files = _world.files();
  run.launches = test::ChildFolder(_world.host("/control")).records("rcplauncher");
  return run;
}

}  // namespace installer::faults
