#include "platform/linux/SyslogSystemLog.h"

#include <syslog.h>

#include "base/TraceLine.h"

namespace installer {

SyslogSystemLog::SyslogSystemLog(Clock& clock) : _files(clock) {}

void SyslogSystemLog::write(LogLevel level, std::string_view message) {
  LineText text;
  appendEscaped(message, text);
  const std::string_view line = viewOf(text);
  syslog(static_cast<int>(level), "%.*s", static_cast<int>(line.size()), line.data());
  _files.write(level, line);
}

int SyslogSystemLog::addFile(int descriptor) {
  return _files.add(descriptor);
}

void SyslogSystemLog::removeFile(int descriptor) {
  _files.remove(descriptor);
}

}  // namespace installer
