#include "platform/posix/PosixClock.h"

#include <thread>

namespace installer {

std::tm PosixClock::localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  (void)localtime_r(&now, &local);  // fails for years beyond int only; then all is 0
  return local;
}

void PosixClock::pause(std::chrono::milliseconds time) {
  std::this_thread::sleep_for(time);
}

}  // namespace installer
