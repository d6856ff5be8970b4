#pragma once

#include <ctime>

namespace installer {

class Clock {
 public:
  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  virtual ~Clock() = default;

  // Now, in the process's local time zone.
  virtual std::tm localTime() = 0;
};

}  // namespace installer
