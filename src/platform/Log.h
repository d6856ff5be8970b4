#pragma once

#include <fmt/format.h>

#include <optional>
#include <string>
#include <utility>

#include "platform/Platform.h"
#include "platform/SystemLog.h"

namespace installer {

// An absent text as a log line shows it.
inline std::string orNull(const std::optional<std::string>& text) {
  return text.value_or("(null)");
}

// Writes one line to the system log and its mirrors. The format is checked when compiled; values
// are never used as formats.
template <class... Arguments>
void log(LogLevel level, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  Platform::current().log->write(level, fmt::format(format, std::forward<Arguments>(arguments)...));
}

// The same, unless a ToldOnce lives that has seen the very line before.
template <class... Arguments>
void logOnce(LogLevel level, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  const std::string line = fmt::format(format, std::forward<Arguments>(arguments)...);
  Platform& platform = Platform::current();
  if (platform.toldOnce > 0 && !platform.saidOnce.insert(line).second) return;
  platform.log->write(level, line);
}

}  // namespace installer
