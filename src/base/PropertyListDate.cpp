#include "base/PropertyListDate.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>

namespace installer::PropertyList {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:ddZ";  // "d" is a digit
constexpr long kSecondsADay = 24L * 60 * 60;
constexpr sys_days kEpoch = std::chrono::year{2001} / 1 / 1;
constexpr int kFirstYear = 1;
constexpr int kLastYear = 9999;

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool hasPattern(std::string_view text) {
  if (text.size() != kPattern.size()) return false;
  for (std::size_t at = 0; at < text.size(); ++at)
    if (kPattern[at] == 'd' ? !isDigit(text[at]) : text[at] != kPattern[at]) return false;
  return true;
}

int numberAt(std::string_view text, std::size_t at, std::size_t digits) {
  int number = 0;
  for (const char digit : text.substr(at, digits)) number = number * 10 + (digit - '0');
  return number;
}

constexpr long daysFromEpoch(sys_days day) {
  return (day - kEpoch).count();
}

// The first and the last second that have a year of four digits.
constexpr double kEarliest = daysFromEpoch(std::chrono::year{kFirstYear} / 1 / 1) * kSecondsADay;
constexpr double kLatest =
    daysFromEpoch(std::chrono::year{kLastYear + 1} / 1 / 1) * kSecondsADay - 1;

}  // namespace

std::optional<Date> dateFromText(std::string_view text) {
  if (!hasPattern(text)) return std::nullopt;
  const int yearNumber = numberAt(text, 0, 4);
  const auto month = static_cast<unsigned>(numberAt(text, 5, 2));
  const auto dayOfMonth = static_cast<unsigned>(numberAt(text, 8, 2));
  const year_month_day day{std::chrono::year{yearNumber}, std::chrono::month{month},
                           std::chrono::day{dayOfMonth}};
  const int hour = numberAt(text, 11, 2);
  const int minute = numberAt(text, 14, 2);
  const int second = numberAt(text, 17, 2);
  if (yearNumber < kFirstYear || !day.ok() || hour > 23 || minute > 59 || second > 59)
    return std::nullopt;
  const long seconds = daysFromEpoch(day) * kSecondsADay + hour * 3600L + minute * 60L + second;
  return Date{static_cast<double>(seconds)};
}

Date tellableDate(const Date& date) {
  if (!(date.seconds >= kEarliest)) return {kEarliest};
  return std::floor(date.seconds) > kLatest ? Date{kLatest} : date;
}

std::optional<std::string> textFromDate(const Date& date) {
  const double whole = std::floor(date.seconds);
  if (!(whole >= kEarliest && whole <= kLatest)) return std::nullopt;  // NaN is neither
  const auto seconds = static_cast<long>(whole);
  const long secondOfDay = ((seconds % kSecondsADay) + kSecondsADay) % kSecondsADay;
  const sys_days days = kEpoch + std::chrono::days{(seconds - secondOfDay) / kSecondsADay};
  const year_month_day day{days};
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(day.year()),
                     static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                     secondOfDay / 3600, secondOfDay / 60 % 60, secondOfDay % 60);
}

}  // namespace installer::PropertyList
