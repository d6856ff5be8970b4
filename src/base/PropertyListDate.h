#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "hotfix/base/PropertyList.h"

// Dates as XML property lists tell them: "2013-03-05T09:07:00Z", years 0001 to 9999.
namespace installer::PropertyList {

// nullopt for any other form and for a day or time that does not exist.
[[nodiscard]] std::optional<Date> dateFromText(std::string_view text);

// The whole second in which the date lies; nullopt when it has no four-digit year.
[[nodiscard]] std::optional<std::string> textFromDate(const Date& date);

// The date itself or, for one without a four-digit year, the nearest second that has one; the
// earliest for what is no number.
Date tellableDate(const Date& date);

}  // namespace installer::PropertyList
