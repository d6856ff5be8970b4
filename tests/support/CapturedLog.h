#pragma once

#include <gmock/gmock.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/SystemLog.h"
#include "platform/posix/LogFiles.h"

namespace installer::test {

struct LogLine {
  LogLevel level = LogLevel::info;
  std::string text;  // exactly as it was written, a line break at its end included

  friend bool operator==(const LogLine&, const LogLine&) = default;
};

void PrintTo(const LogLine& line, std::ostream* stream);

// Remembers every line and mirrors it into the added files as the real log does.
class CapturedLog : public SystemLog {
 public:
  explicit CapturedLog(Clock& clock) : _files(clock) {}

  const std::vector<LogLine>& lines() const { return _lines; }
  void clear() { _lines.clear(); }

  void write(LogLevel level, std::string_view message) override;
  int addFile(int descriptor) override { return _files.add(descriptor); }
  void removeFile(int descriptor) override { _files.remove(descriptor); }

 private:
  std::vector<LogLine> _lines;
  LogFiles _files;
};

// Matchers for log lines: AtLevel(3) or AtLevel(LogLevel::error); Mentions("part of the text");
// Says(LogLevel::error, "the whole text").
inline auto AtLevel(LogLevel level) {
  return ::testing::Field("level", &LogLine::level, level);
}
inline auto AtLevel(int level) {
  return AtLevel(static_cast<LogLevel>(level));
}
inline auto Mentions(const std::string& part) {
  return ::testing::Field("text", &LogLine::text, ::testing::HasSubstr(part));
}
inline auto Says(LogLevel level, const std::string& text) {
  return ::testing::AllOf(AtLevel(level), ::testing::Field("text", &LogLine::text, text));
}

}  // namespace installer::test
