#include "platform/posix/ChildEnd.h"

#include <sys/wait.h>

#include "platform/posix/Uninterrupted.h"

namespace installer {

bool hasEnded(pid_t child, int options) {
  siginfo_t ended{};
  const auto wait = [&] {
    return waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT | options);
  };
  return uninterrupted(wait) != 0 || ended.si_pid == child;
}

std::optional<int> reaped(pid_t child) {
  int status = 0;
  const auto wait = [&] { return waitpid(child, &status, 0); };
  return uninterrupted(wait) == child ? std::optional(status) : std::nullopt;
}

}  // namespace installer
