// Runs the installer again and again, each time with one fault at one of its calls, and looks at
// what is left. docs/testing.md tells how.

#include <cstdio>
#include <string>

#include "faults/Apart.h"
#include "faults/Kinds.h"
#include "faults/Options.h"
#include "faults/Scenario.h"
#include "faults/Sweep.h"

namespace installer::faults {
namespace {

int list() {
  std::puts("scenarios:");
  for (const Scenario& scenario : scenarios())
    std::printf("  %-16s %s\n", scenario.name.c_str(), scenario.about.c_str());
  std::puts("kinds:");
  for (const Kind& kind : kinds())
    std::printf("  %-16s %s\n", kind.name.c_str(), kind.about.c_str());
  return 0;
}

int sweepIn(const std::string& folder, const Options& options) {
  const auto distance = distanceOfMain(options.program);
  if (!distance) {
    std::printf("%s has no function main to be seen\n", options.program.c_str());
    return kTrouble;
  }
  const World world(folder, options.program);
  return sweep(Runner(world, *distance), options);
}

int run(const Options& options) {
  if (options.list) return list();
  return runApart([&](const std::string& folder) { return sweepIn(folder, options); });
}

}  // namespace
}  // namespace installer::faults

int main(int argc, char** argv) {
  using namespace installer::faults;
  const auto options = optionsFrom({argv + 1, argv + argc});
  if (!options) {
    std::fputs(kUsage, stderr);
    return kTrouble;
  }
  return run(*options);
}
