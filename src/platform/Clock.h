#pragma once

#include <chrono>
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

  // Comes back when the time has gone by, whatever signals arrive meanwhile.
  virtual void pause(std::chrono::milliseconds time) = 0;
};

}  // namespace installer
