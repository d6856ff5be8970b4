#include "platform/posix/PosixClock.h"

namespace installer {

std::tm PosixClock::localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local;
}

}  // namespace installer
