#include "driver/Wait.h"

#include "platform/Clock.h"
#include "platform/Interruption.h"
#include "platform/Log.h"

namespace installer {

namespace {

// Between two attempts: short beside a run, long beside an attempt.
constexpr std::chrono::milliseconds kPause{100};
constexpr std::chrono::milliseconds kLongWait{10'000};

}  // namespace

void Wait::pause() {
  checkInterruption();
  if (_waited == _waited.zero()) log(LogLevel::notice, "{}", _notice);
  if (_waited == kLongWait)
    log(LogLevel::notice, "{} after {} seconds, waiting on.", _later,
        std::chrono::duration_cast<std::chrono::seconds>(kLongWait).count());
  Platform::current().clock->pause(kPause);
  _waited += kPause;
}

}  // namespace installer
