#include "platform/posix/PosixClock.h"

#include <thread>

namespace installer {

std::tm PosixClock::localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local;
}

void PosixClock::pause(std::chrono::milliseconds time) {
  std::this_thread::sleep_for(time);
}

}  // namespace installer
