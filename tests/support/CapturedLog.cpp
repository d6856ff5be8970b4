#include "support/CapturedLog.h"

#include <ostream>

#include "base/TraceLine.h"

namespace installer::test {

void CapturedLog::write(LogLevel level, std::string_view message) {
  _lines.push_back({level, std::string(message)});
  LineText text;
  appendEscaped(message, text);
  _files.write(level, viewOf(text));
}

void PrintTo(const LogLine& line, std::ostream* stream) {
  *stream << '<' << static_cast<int>(line.level) << "> " << ::testing::PrintToString(line.text);
}

}  // namespace installer::test
