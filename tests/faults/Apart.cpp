#include "faults/Apart.h"

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "faults/Tracee.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace {

int skip(const std::string& reason) {
  std::printf("skipped: %s\n", reason.c_str());
  return kSkipped;
}

int runAsFirstProcess(const std::function<int()>& steps) {
  if (unshare(CLONE_NEWPID) != 0) return skip("no process list of our own");
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // and with the first process all others end
    const int status = steps();
    std::fflush(stdout);
    _exit(status);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kTrouble;
}

}  // namespace

int runApart(const std::function<int(const std::string& folder)>& steps) {
  if (const auto refusal = followingRefused()) return skip(*refusal);
  char folder[] = "/tmp/hotfix-apart-XXXXXX";
  if (mkdtemp(folder) == nullptr) return kTrouble;
  int status = kTrouble;
  if (const auto refusal = test::enterPrivateMounts(folder)) {
    status = skip(*refusal);
  } else if (!test::canGiveAway(folder)) {
    status = skip("files can not be given to other users: this needs root");
  } else {
    status = runAsFirstProcess([&] { return steps(folder); });
  }
  umount2(folder, MNT_DETACH);
  rmdir(folder);
  return status;
}

}  // namespace installer::faults
