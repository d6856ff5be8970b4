#pragma once

#include "platform/SystemLog.h"
#include "platform/posix/LogFiles.h"

namespace installer {

class SyslogSystemLog : public SystemLog {
 public:
  explicit SyslogSystemLog(Clock& clock);
  ~SyslogSystemLog() override;

  void write(LogLevel level, std::string_view message) override;
  int addFile(int descriptor) override;
  void removeFile(int descriptor) override;

 private:
  LogFiles _files;
};

}  // namespace installer
