#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/LogLevel.h"

namespace installer::ctl {

// A line of the trace as TraceLine writes it. The texts are those of the line that was read.
struct TraceRecord {
  std::string_view time;    // "Nov  2 07:08:09"
  std::int64_t second = 0;  // of the year
  std::string_view host;
  long process = 0;
  LogLevel level = LogLevel::info;
  std::string_view text;
};

// nullopt for a line of another form. `year` tells whether there is a 29th of February.
[[nodiscard]] std::optional<TraceRecord> readTraceRecord(std::string_view line, int year);

// From one second of the year to a later one, both counted as readTraceRecord() does for `year`.
// The year may change between them; a clock that was turned back meanwhile makes it none.
std::int64_t secondsBetween(std::int64_t second, std::int64_t later, int year);

// "Error", as the trace has it.
std::string_view nameOf(LogLevel level);

}  // namespace installer::ctl
