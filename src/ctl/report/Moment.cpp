#include "ctl/report/Moment.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "ctl/install/KeptRuns.h"

namespace installer::ctl::report {

namespace {

using std::chrono::sys_seconds;

// Takes a time apart. After the first letter that is not as expected it takes nothing more.
class TimeText {
 public:
  explicit TimeText(std::string_view text) : _rest(text) {}

  int number(std::size_t digits) {
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      const char digit = letter();
      if (digit < '0' || digit > '9') _isWrong = true;
      value = value * 10 + (digit - '0');
    }
    return value;
  }
  void separator(char expected) {
    if (letter() != expected) _isWrong = true;
  }
  // 1 or -1.
  int sign() {
    const char found = letter();
    if (found != '+' && found != '-') _isWrong = true;
    return found == '-' ? -1 : 1;
  }
  bool isWrong() const { return _isWrong; }
  bool isAtEnd() const { return _rest.empty(); }

 private:
  // Behind the end it is no letter of a time.
  char letter() {
    const char first = _rest.empty() ? ' ' : _rest.front();
    if (!_rest.empty()) _rest.remove_prefix(1);
    return first;
  }

  std::string_view _rest;
  bool _isWrong = false;
};

struct Day {
  int year;
  int month;
  int day;
};
struct TimeOfDay {
  int hour;
  int minute;
  int second;
};

std::optional<std::int64_t> momentOf(const Day& day, const TimeOfDay& time) {
  constexpr int kFirstYear = 1970;
  const std::chrono::year_month_day date{std::chrono::year(day.year),
                                         std::chrono::month(static_cast<unsigned>(day.month)),
                                         std::chrono::day(static_cast<unsigned>(day.day))};
  const bool isTime = time.hour < 24 && time.minute < 60 && time.second <= 60;
  if (!date.ok() || day.year < kFirstYear || !isTime) return std::nullopt;
  const sys_seconds moment = std::chrono::sys_days(date) + std::chrono::hours(time.hour) +
                             std::chrono::minutes(time.minute) + std::chrono::seconds(time.second);
  return moment.time_since_epoch().count();
}

// Three numbers, of which the later ones have two digits, with the separator between them; '\0' for
// none.
std::array<int, 3> numbersIn(TimeText& text, std::size_t digits, char separator) {
  std::array<int, 3> numbers{text.number(digits)};
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    if (separator != '\0') text.separator(separator);
    numbers[i] = text.number(2);
  }
  return numbers;
}
Day dayIn(TimeText& text, char separator) {
  const auto [year, month, day] = numbersIn(text, 4, separator);
  return {year, month, day};
}
TimeOfDay timeIn(TimeText& text, char separator) {
  const auto [hour, minute, second] = numbersIn(text, 2, separator);
  return {hour, minute, second};
}

}  // namespace

std::optional<std::int64_t> momentOf(std::string_view isoTime) {
  TimeText text(isoTime);
  const Day day = dayIn(text, '-');
  text.separator('T');
  const TimeOfDay time = timeIn(text, ':');
  const int sign = text.sign();
  const std::int64_t hours = text.number(2);
  text.separator(':');
  const std::int64_t minutes = text.number(2);
  if (text.isWrong() || !text.isAtEnd()) return std::nullopt;
  const auto local = momentOf(day, time);
  if (!local) return std::nullopt;
  return std::max<std::int64_t>(0, *local - sign * (hours * 60 + minutes) * 60);
}

std::optional<std::int64_t> momentOfRun(std::string_view name) {
  if (!install::isNameOfRun(name)) return std::nullopt;
  TimeText text(name);
  const Day day = dayIn(text, '\0');
  text.separator('T');
  return momentOf(day, timeIn(text, '\0'));
}

std::string utcText(std::int64_t moment) {
  const sys_seconds time{std::chrono::seconds(moment)};
  const auto midnight = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss clock(time - midnight);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", static_cast<int>(day.year()),
                     static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                     clock.hours().count(), clock.minutes().count(), clock.seconds().count());
}

}  // namespace installer::ctl::report
