#pragma once

#include <optional>
#include <string>

#include "platform/SystemLog.h"
#include "platform/posix/LogFiles.h"

namespace installer {

// Lines go out under the name and over the connection that the process has chosen (setUpProcess()
// chooses for our program): a host of the library keeps its own.
class SyslogSystemLog : public SystemLog {
 public:
  explicit SyslogSystemLog(Clock& clock);

  // The system log listens at `socket`. While nothing is there, which is looked at once a second,
  // nothing goes out: the C library would make a connection in vain for each line.
  SyslogSystemLog(Clock& clock, std::string socket);

  void write(LogLevel level, std::string_view message) override;
  [[nodiscard]] int addFile(int descriptor) override;
  void removeFile(int descriptor) override;

 private:
  bool isHeard();

  Clock& _clock;
  LogFiles _files;
  std::optional<std::string> _socket;  // nullopt when it is never looked at
  int _lookedAt = -1;                  // second of the minute
  bool _isThere = true;
};

}  // namespace installer
