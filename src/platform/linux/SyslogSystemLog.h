#pragma once

#include <string>

#include "platform/SystemLog.h"
#include "platform/posix/LogFiles.h"

namespace installer {

// Lines go out under the name and over the connection that the process has chosen (setUpProcess()
// chooses for our program): a host of the library keeps its own.
class SyslogSystemLog : public SystemLog {
 public:
  explicit SyslogSystemLog(Clock& clock);

  // The system log listens at `socket`. Until something is there, which is looked at for the first
  // line and every 64 lines, nothing goes out: the C library would make a connection in vain for
  // each.
  SyslogSystemLog(Clock& clock, std::string socket);

  void write(LogLevel level, std::string_view message) override;
  [[nodiscard]] int addFile(int descriptor) override;
  void removeFile(int descriptor) override;

 private:
  bool isHeard();

  LogFiles _files;
  std::string _socket;
  unsigned _unheard = 0;  // lines
  bool _isThere = false;  // for good: what becomes of a connection the C library knows better
};

}  // namespace installer
