#pragma once

#include "platform/SystemLog.h"
#include "platform/posix/LogFiles.h"

namespace installer {

// Lines go out under the name and over the connection that the process has chosen (setUpProcess()
// chooses for our program): a host of the library keeps its own.
class SyslogSystemLog : public SystemLog {
 public:
  explicit SyslogSystemLog(Clock& clock);

  void write(LogLevel level, std::string_view message) override;
  [[nodiscard]] int addFile(int descriptor) override;
  void removeFile(int descriptor) override;

 private:
  LogFiles _files;
};

}  // namespace installer
