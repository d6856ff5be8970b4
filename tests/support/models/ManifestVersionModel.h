#pragma once

#include <string>

// Models the version stamp of a moment in local time and its padding.
namespace installer::model {

inline std::string padded(const std::string& number) {
  if (number.length() != 1) return number;
  return "0" + number;
}

// All as people say them: months from 1, years in full.
inline std::string manifestVersion(int year, int month, int day, int hour, int minute) {
  std::string stamp;
  const auto append = [&stamp](int number) {
    stamp += static_cast<char>('0' + number / 10);
    stamp += static_cast<char>('0' + number % 10);
  };
  append(day);
  append(month);
  append(year % 100);
  append(hour);
  append(minute);
  return stamp;
}

}  // namespace installer::model
