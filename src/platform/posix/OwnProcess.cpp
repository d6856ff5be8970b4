#include "platform/posix/OwnProcess.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>

namespace installer {

namespace {

std::atomic<pid_t> known = 0;

void forget() {
  known = 0;
}

}  // namespace

// Nothing is kept when nothing would tell a child of ours to forget it.
pid_t ownProcess() {
  static const bool isForgottenInTime = pthread_atfork(nullptr, nullptr, forget) == 0;
  if (!isForgottenInTime) return getpid();
  if (known == 0) known = getpid();
  return known;
}

}  // namespace installer
