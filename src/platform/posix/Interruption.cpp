#include "platform/Interruption.h"

#include <sys/types.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <type_traits>

#include "platform/posix/ChildOfSignals.h"
#include "platform/posix/SignalText.h"

namespace installer {

namespace {

constexpr std::array kAsked = {SIGHUP, SIGINT, SIGTERM};

static_assert(std::is_same_v<std::sig_atomic_t, pid_t>);
volatile std::sig_atomic_t noted = 0;         // the first such signal
volatile std::sig_atomic_t runningChild = 0;  // its number; 0: none
int held = 0;                                 // how many HeldInterruptions live

void passOn(int signal) {
  if (runningChild > 0) (void)kill(runningChild, signal);  // it may have ended just now
}

extern "C" void note(int signal) {
  const int error = errno;
  if (noted == 0) noted = signal;
  passOn(signal);
  errno = error;
}

void noteUnlessIgnored(int signal) {
  struct sigaction action {};
  if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
  action.sa_handler = note;
  action.sa_flags = SA_RESTART;  // what waits is told, or asks by itself
  sigemptyset(&action.sa_mask);
  (void)sigaction(signal, &action, nullptr);  // known, and allowed to be handled
}

}  // namespace

void noteInterruptions() {
  for (const int signal : kAsked) noteUnlessIgnored(signal);
}

void checkInterruption() {
  if (noted != 0 && held == 0) throw Interrupted{signalText(noted)};
}

std::optional<std::string> notedInterruption() {
  if (noted == 0) return std::nullopt;
  return signalText(noted);
}

HeldInterruptions::HeldInterruptions() {
  ++held;
}

HeldInterruptions::~HeldInterruptions() {
  --held;
}

// A signal that came while the child was being started has not reached it.
ChildOfSignals::ChildOfSignals(pid_t child) {
  runningChild = child;
  if (noted != 0) passOn(noted);
}

ChildOfSignals::~ChildOfSignals() {
  runningChild = 0;
}

}  // namespace installer
