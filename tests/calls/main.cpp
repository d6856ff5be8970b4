// Counts the system calls of whole runs on the sample, by kind: one line for each run and kind,
// with tabs between run, kind and count. tests/calls/count compares them with what was recorded.

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "calls/CallNames.h"
#include "calls/SampleRuns.h"
#include "faults/Tracee.h"
#include "support/linux/PrivateRoot.h"

namespace installer::calls {
namespace {

constexpr int kTrouble = 2;
constexpr int kSkipped = 77;

int skip(const std::string& reason) {
  std::printf("skipped: %s\n", reason.c_str());
  return kSkipped;
}

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
    return kTrouble;
  }
  const SampleRoot root(folder, program);
  bool isCounted = true;
  for (const SampleRun& run : sampleRuns()) isCounted = count(root, run, *distance) && isCounted;
  return isCounted ? 0 : kTrouble;
}

// In a process list of its own: what else runs on the machine is not looked at.
int countApart(const std::string& folder, const std::string& program) {
  if (unshare(CLONE_NEWPID) != 0) return skip("no process list of our own");
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const int status = countAll(folder, program);
    std::fflush(stdout);
    _exit(status);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kTrouble;
}

int run(const std::string& program) {
  if (const auto refusal = faults::followingRefused()) return skip(*refusal);
  char folder[] = "/tmp/hotfix-calls-XXXXXX";
  if (mkdtemp(folder) == nullptr) return kTrouble;
  int status = kTrouble;
  if (const auto refusal = test::enterPrivateMounts(folder)) {
    status = skip(*refusal);
  } else if (!test::canGiveAway(folder)) {
    status = skip("files can not be given to other users: this needs root");
  } else {
    status = countApart(folder, program);
  }
  umount2(folder, MNT_DETACH);
  rmdir(folder);
  return status;
}

}  // namespace
}  // namespace installer::calls

int main(int argc, char** argv) {
  return installer::calls::run(argc > 1 ? argv[1] : HOTFIX_PROGRAM);
}
