#include "ctl/install/Deadline.h"

#include "platform/Clock.h"
#include "platform/Interruption.h"
#include "platform/Platform.h"

namespace installer::ctl::install {

namespace {

constexpr std::chrono::milliseconds kPause{100};

}  // namespace

bool Deadline::allowsAnotherTry() const {
  if (std::chrono::steady_clock::now() >= _end) return false;
  checkInterruption();
  Platform::current().clock->pause(kPause);
  return true;
}

}  // namespace installer::ctl::install
