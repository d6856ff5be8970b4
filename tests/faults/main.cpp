// Runs the installer again and again, each time with one fault at one of its calls, and looks at
// what is left. docs/testing.md tells how.

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "faults/Kinds.h"
#include "faults/Options.h"
#include "faults/Scenario.h"
#include "faults/Sweep.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {
namespace {

constexpr int kTrouble = 2;
constexpr int kSkipped = 77;

int list() {
  std::puts("scenarios:");
  for (const Scenario& scenario : scenarios())
    std::printf("  %-16s %s\n", scenario.name.c_str(), scenario.about.c_str());
  std::puts("kinds:");
  for (const Kind& kind : kinds())
    std::printf("  %-16s %s\n", kind.name.c_str(), kind.about.c_str());
  return 0;
}

int skip(const std::string& reason) {
  std::printf("skipped: %s\n", reason.c_str());
  return kSkipped;
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

// In a process list of its own, where the sweep is the first process and the runs are all others.
int sweepApart(const std::string& folder, const Options& options) {
  if (unshare(CLONE_NEWPID) != 0) return skip("no process list of our own");
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // and with the first process all others end
    const int status = sweepIn(folder, options);
    std::fflush(stdout);
    _exit(status);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kTrouble;
}

int run(const Options& options) {
  if (options.list) return list();
  if (const auto refusal = followingRefused()) return skip(*refusal);
  char folder[] = "/tmp/hotfix-faults-XXXXXX";
  if (mkdtemp(folder) == nullptr) return kTrouble;
  int status = kTrouble;
  if (const auto refusal = test::enterPrivateMounts(folder)) {
    status = skip(*refusal);
  } else if (!test::canGiveAway(folder)) {
    status = skip("files can not be given to other users: this needs root");
  } else {
    status = sweepApart(folder, options);
  }
  umount2(folder, MNT_DETACH);
  rmdir(folder);
  return status;
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
