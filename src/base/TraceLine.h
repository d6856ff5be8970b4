#pragma once

#include <fmt/format.h>

#include <ctime>
#include <string_view>

#include "base/LogLevel.h"

namespace installer {

// A text that is being put together. As long as it is short (500 bytes) it asks for no memory, so
// that a run can tell even that it has none.
using LineText = fmt::memory_buffer;

inline std::string_view viewOf(const LineText& text) {
  return {text.data(), text.size()};
}

// Adds `message` as one line that no terminal and no reader of lines can misunderstand: one line
// feed at its end is dropped, control characters are written as \n, \r, \t or \xHH, and so is each
// byte that is no UTF-8. Everything else, backslashes included, stays.
void appendEscaped(std::string_view message, LineText& text);

// The formatting copies bytes from where a text is, be it empty: none of them is nowhere.
struct TraceLine {
  std::tm time{};  // local time
  std::string_view host = "";
  long process = 0;
  LogLevel level = LogLevel::info;
  std::string_view message = "";  // escaped
};

// Adds "Mon DD hh:mm:ss host HotfixInstaller[process] <Level>: message" and a line feed; days below
// ten have a blank before them.
void appendFormatted(const TraceLine& line, LineText& text);

}  // namespace installer
