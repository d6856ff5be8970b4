#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/SystemLog.h"

namespace installer {

class Clock;

// The open files that mirror the system log, each line by one write, so that lines of several
// writers never mix.
class LogFiles {
 public:
  explicit LogFiles(Clock& clock);

  // 0, or -1 when the descriptor is not open. A descriptor added twice gets each line once.
  [[nodiscard]] int add(int descriptor);
  void remove(int descriptor);

  // `message` is escaped already.
  void write(LogLevel level, std::string_view message) const;

 private:
  Clock& _clock;
  const std::string _host;
  std::vector<int> _descriptors;  // the caller's
};

}  // namespace installer
