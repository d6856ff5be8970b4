// Counts the system calls of whole runs on the sample, by kind: one line for each run and kind,
// with tabs between run, kind and count, below one for kernel and C library with a tab between
// them. tests/calls/count compares them with what was recorded.

#include <cstdio>
#include <map>
#include <string>

#include "calls/CallNames.h"
#include "calls/SampleRuns.h"
#include "calls/Surroundings.h"
#include "faults/Apart.h"
#include "faults/Tracee.h"

namespace installer::calls {
namespace {

// From the first instruction of main() on; what the loader does before, and what children do, is
// not the program's.
bool count(const SampleRoot& root, const SampleRun& run, std::uint64_t distanceOfMain) {
  root.prepare(run);
  std::map<std::string, int> counts;
  faults::Tracee program(root.start(run), distanceOfMain);
  while (const auto number = program.nextOfAll())
    if (!isLibrarys(*number)) ++counts[nameOfCall(*number)];
  for (const auto& [kind, number] : counts)
    std::printf("%s\t%s\t%d\n", run.name.c_str(), kind.c_str(), number);
  if (program.end().status == run.status && program.end().signal == 0) return true;
  std::fprintf(stderr, "%s: ended with %d\n", run.name.c_str(), program.end().status);
  return false;
}

int countAll(const std::string& folder, const std::string& program) {
  const auto distance = faults::distanceOfMain(program);
  if (!distance) {
    std::fprintf(stderr, "%s has no function main to be seen\n", program.c_str());
    return faults::kTrouble;
  }
  const SampleRoot root(folder, program);
  std::printf("%s\t%s\n", kernel().c_str(), library().c_str());
  bool isCounted = true;
  for (const SampleRun& run : sampleRuns()) isCounted = count(root, run, *distance) && isCounted;
  return isCounted ? 0 : faults::kTrouble;
}

// Other calls are made then, which are counted nowhere.
int skipWithout(const std::string& call) {
  std::printf("skipped: this kernel does not answer %s\n", call.c_str());
  return faults::kSkipped;
}

}  // namespace
}  // namespace installer::calls

int main(int argc, char** argv) {
  using namespace installer;
  const std::string program = argc > 1 ? argv[1] : HOTFIX_PROGRAM;
  if (const auto call = calls::lackingCall()) return calls::skipWithout(*call);
  return faults::runApart(
      [&](const std::string& folder) { return calls::countAll(folder, program); });
}
