#include "platform/macos/AslSystemLog.h"

#include <asl.h>

#include "base/TraceLine.h"

namespace installer {

void AslSystemLog::write(LogLevel level, std::string_view message) {
  LineText text;
  appendEscaped(message, text);
  const std::string_view line = viewOf(text);
// Deprecated in favour of a log that keeps no plain levels; the readers of our lines expect these.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  asl_log(nullptr, nullptr, static_cast<int>(level), "%.*s", static_cast<int>(line.size()),
          line.data());
#pragma GCC diagnostic pop
  _files.write(level, line);
}

}  // namespace installer
