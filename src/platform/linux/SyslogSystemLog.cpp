#include "platform/linux/SyslogSystemLog.h"

#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/TraceLine.h"

namespace installer {

namespace {

// Lines that nobody may hear before the next look.
constexpr unsigned kUnheardLines = 64;

}  // namespace

SyslogSystemLog::SyslogSystemLog(Clock& clock) : _files(clock), _isThere(true) {}

SyslogSystemLog::SyslogSystemLog(Clock& clock, std::string socket)
    : _files(clock), _socket(std::move(socket)) {}

void SyslogSystemLog::write(LogLevel level, std::string_view message) {
  LineText text;
  appendEscaped(message, text);
  const std::string_view line = viewOf(text);
  if (isHeard())
    syslog(static_cast<int>(level), "%.*s", static_cast<int>(line.size()), line.data());
  _files.write(level, line);
}

bool SyslogSystemLog::isHeard() {
  if (!_isThere && _unheard++ % kUnheardLines == 0)
    _isThere = access(_socket.c_str(), F_OK) == 0 || errno != ENOENT;
  return _isThere;
}

int SyslogSystemLog::addFile(int descriptor) {
  return _files.add(descriptor);
}

void SyslogSystemLog::removeFile(int descriptor) {
  _files.remove(descriptor);
}

}  // namespace installer
