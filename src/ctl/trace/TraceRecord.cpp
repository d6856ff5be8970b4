#include "ctl/trace/TraceRecord.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace installer::ctl {

namespace {

constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::array kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr std::array<std::string_view, 4> kLevels = {"Error", "Warning", "Notice", "Info"};
constexpr std::string_view kProgram = "HotfixInstaller[";
constexpr std::string_view kBehindLevel = ">: ";
constexpr std::size_t kTimeLength = 15;
constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60;

bool isLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// The number that the text is, in decimal digits alone, if it lies between the two.
std::optional<int> number(std::string_view text, int least, int most) {
  int value = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || last != end || value < least || value > most) return std::nullopt;
  return value;
}

std::optional<std::size_t> month(std::string_view name) {
  const auto* const found = std::find(kMonths.begin(), kMonths.end(), name);
  if (found == kMonths.end()) return std::nullopt;
  return static_cast<std::size_t>(found - kMonths.begin());
}

// "Nov  2 07:08:09"
std::optional<std::int64_t> secondOfYear(std::string_view time, int year) {
  if (time.size() != kTimeLength || time[3] != ' ' || time[6] != ' ' || time[9] != ':' ||
      time[12] != ':')
    return std::nullopt;
  const auto inYear = month(time.substr(0, 3));
  const auto day = number(time.substr(time[4] == ' ' ? 5 : 4, time[4] == ' ' ? 1 : 2), 1, 31);
  const auto hour = number(time.substr(7, 2), 0, 23);
  const auto minute = number(time.substr(10, 2), 0, 59);
  const auto second = number(time.substr(13, 2), 0, 60);
  if (!inYear || !day || !hour || !minute || !second) return std::nullopt;
  std::int64_t days = *day - 1;
  for (std::size_t before = 0; before < *inYear; ++before) days += kDays.at(before);
  if (*inYear > 1 && isLeapYear(year)) ++days;
  return days * kDay + std::int64_t{*hour} * 3600 + std::int64_t{*minute} * 60 + *second;
}

std::optional<LogLevel> level(std::string_view name) {
  const auto* const found = std::find(kLevels.begin(), kLevels.end(), name);
  if (found == kLevels.end()) return std::nullopt;
  return static_cast<LogLevel>(static_cast<int>(LogLevel::error) +
                               static_cast<int>(found - kLevels.begin()));
}

// Takes what stands before the mark off the text, and the mark; nullopt when it is not there.
std::optional<std::string_view> takeUntil(std::string_view mark, std::string_view& text) {
  const std::size_t end = text.find(mark);
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end + mark.size());
  return taken;
}

std::optional<long> process(std::string_view text) {
  long value = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || last != end) return std::nullopt;
  return value;
}

}  // namespace

std::string_view nameOf(LogLevel level) {
  return kLevels.at(static_cast<std::size_t>(level) - static_cast<std::size_t>(LogLevel::error));
}

std::optional<TraceRecord> readTraceRecord(std::string_view line, int year) {
  const std::string_view time = line.substr(0, kTimeLength);
  const auto second = secondOfYear(time, year);
  if (!second || line.substr(kTimeLength, 1) != " ") return std::nullopt;
  line.remove_prefix(kTimeLength + 1);
  const auto host = takeUntil(" ", line);
  if (!host || !line.starts_with(kProgram)) return std::nullopt;
  line.remove_prefix(kProgram.size());
  const auto digits = takeUntil("] <", line);
  const auto name = takeUntil(kBehindLevel, line);
  if (!digits || !name) return std::nullopt;
  const auto id = process(*digits);
  const auto importance = level(*name);
  if (!id || !importance) return std::nullopt;
  return TraceRecord{time, *second, *host, *id, *importance, line};
}

std::int64_t secondsBetween(std::int64_t second, std::int64_t later, int year) {
  if (later >= second) return later - second;
  constexpr std::int64_t kHalfAYear = 183 * kDay;
  const std::int64_t wholeYear = (isLeapYear(year) ? 366 : 365) * kDay;
  const std::int64_t before = second - later;
  return before > kHalfAYear && before <= wholeYear ? wholeYear - before : 0;
}

}  // namespace installer::ctl
