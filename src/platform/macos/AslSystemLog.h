#pragma once

#include "platform/SystemLog.h"
#include "platform/posix/LogFiles.h"

namespace installer {

// The Apple System Log, by the process's default client. The files are written here and not by the
// log's own mirroring, so that a line has the same form on every system.
class AslSystemLog : public SystemLog {
 public:
  explicit AslSystemLog(Clock& clock) : _files(clock) {}

  void write(LogLevel level, std::string_view message) override;
  [[nodiscard]] int addFile(int descriptor) override { return _files.add(descriptor); }
  void removeFile(int descriptor) override { _files.remove(descriptor); }

 private:
  LogFiles _files;
};

}  // namespace installer
