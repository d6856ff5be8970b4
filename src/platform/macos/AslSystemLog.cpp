#include "platform/macos/AslSystemLog.h"

#include <asl.h>

#include <string>

#include "base/TraceLine.h"

namespace installer {

void AslSystemLog::write(LogLevel level, std::string_view message) {
  const std::string line = escapedMessage(message);
// Deprecated in favour of a log that keeps no plain levels; the readers of our lines expect these.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
  asl_log(nullptr, nullptr, static_cast<int>(level), "%s", line.c_str());
#pragma clang diagnostic pop
  _files.write(level, line);
}

}  // namespace installer
