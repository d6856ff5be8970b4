#pragma once

#include <string_view>

#include "base/LogLevel.h"

namespace installer {

// The system log and the files that mirror it. A line is written whole, by one write a file;
// a failing write loses that line and nothing else. A short line (300 bytes) can be written where
// no memory is left.
class SystemLog {
 public:
  SystemLog() = default;
  SystemLog(const SystemLog&) = delete;
  SystemLog& operator=(const SystemLog&) = delete;
  virtual ~SystemLog() = default;

  // `message` is one line of UTF-8; a line break at its end is dropped and control characters are
  // written escaped.
  virtual void write(LogLevel level, std::string_view message) = 0;

  // Mirrors every following line into the open descriptor, which stays the caller's. 0 on success.
  [[nodiscard]] virtual int addFile(int descriptor) = 0;
  // Ends the mirroring. The descriptor is not closed.
  virtual void removeFile(int descriptor) = 0;
};

}  // namespace installer
