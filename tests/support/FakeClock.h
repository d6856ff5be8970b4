#pragma once

#include "platform/Clock.h"

namespace installer::test {

// Stands still, at Saturday 2024-03-09 14:05:07 until it is set.
class FakeClock : public Clock {
 public:
  FakeClock() { set(2024, 3, 9, 14, 5, 7); }

  void set(int year, int month, int day, int hour, int minute, int second = 0) {
    _now = {};
    _now.tm_year = year - 1900;
    _now.tm_mon = month - 1;
    _now.tm_mday = day;
    _now.tm_hour = hour;
    _now.tm_min = minute;
    _now.tm_sec = second;
    _now.tm_isdst = -1;
  }
  void set(const std::tm& now) { _now = now; }

  std::tm localTime() override { return _now; }

 private:
  std::tm _now{};
};

}  // namespace installer::test
