#include "support/ChildRun.h"

#include <grp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace installer::test {

namespace {

bool becomeOrdinaryUser() {
  if (!isRoot()) return true;
  return ::setgroups(0, nullptr) == 0 && ::setegid(kOrdinaryGroup) == 0 &&
         ::seteuid(kOrdinaryUser) == 0;
}

// Nothing gets out of the child: unwound into its parent's frames it would clean up what is theirs,
// with all that it has mounted there.
bool answerOf(const std::function<bool()>& steps) {
  try {
    return steps();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "child: %s\n", error.what());
    return false;
  }
}

// What measures the run writes its findings at the end of the process.
bool withDescriptorsAgain(const std::function<bool()>& steps) {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
  const bool answer = answerOf(steps);
  return ::setrlimit(RLIMIT_NOFILE, &limit) == 0 && answer;
}

}  // namespace

bool isRoot() {
  return ::geteuid() == 0;
}

bool inChild(const std::function<bool()>& steps) {
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) std::exit(withDescriptorsAgain(steps) ? EXIT_SUCCESS : EXIT_FAILURE);
  int status = 0;
  return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == EXIT_SUCCESS;
}

bool asOrdinaryUser(const std::function<bool()>& steps) {
  return inChild([&] {
    if (!becomeOrdinaryUser()) return false;
    const bool answer = steps();
    // Back again, so that what measures the run can write its findings.
    if (::getuid() == 0) return ::seteuid(0) == 0 && answer;
    return answer;
  });
}

void giveToOrdinaryUser(const std::string& path) {
  if (!isRoot()) return;
  if (::lchown(path.c_str(), kOrdinaryUser, kOrdinaryGroup) != 0) std::abort();
}

}  // namespace installer::test
