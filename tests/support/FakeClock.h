#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <utility>

#include "platform/Clock.h"

namespace installer::test {

// Stands still, at Saturday 2024-03-09 14:05:07 until it is set. A pause takes no time; it lets the
// test do what the others do meanwhile.
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

  // Runs at each pause.
  void onPause(std::function<void()> action) { _onPause = std::move(action); }
  // How long all pauses together would have been.
  std::chrono::milliseconds paused() const { return _paused; }

  std::tm localTime() override { return _now; }
  void pause(std::chrono::milliseconds time) override {
    if (!_onPause) throw std::logic_error("a pause that nobody ends");
    _paused += time;
    _onPause();
  }

 private:
  std::tm _now{};
  std::function<void()> _onPause;
  std::chrono::milliseconds _paused{0};
};

}  // namespace installer::test
