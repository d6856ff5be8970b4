#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "base/LogLevel.h"

namespace installer {

// `message` as one line that no terminal and no reader of lines can misunderstand: one line feed at
// its end is dropped, control characters are written as \n, \r, \t or \xHH, and so is each byte
// that is no UTF-8. Everything else, backslashes included, stays.
std::string escapedMessage(std::string_view message);

struct TraceLine {
  std::tm time{};  // local time
  std::string_view host;
  long process = 0;
  LogLevel level = LogLevel::info;
  std::string_view message;  // escaped
};

// "Mon DD hh:mm:ss host HotfixInstaller[process] <Level>: message" and a line feed; days below ten
// have a blank before them.
std::string formatted(const TraceLine& line);

}  // namespace installer
