#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Platform.h"
#include "platform/SystemLog.h"

namespace installer::ctl::lint {

// Keeps what the library would log.
class CollectedLog : public SystemLog {
 public:
  void write(LogLevel /*level*/, std::string_view message) override {
    _lines.emplace_back(message);
  }
  int addFile(int /*descriptor*/) override { return -1; }
  void removeFile(int /*descriptor*/) override {}

  // What came since the last time.
  std::vector<std::string> take() { return std::exchange(_lines, {}); }

 private:
  std::vector<std::string> _lines;
};

// The platform in force, but for its log: as long as this lives, whatever the library does to
// read a package is not told to the system.
class QuietPlatform {
 public:
  QuietPlatform() { _platform.log = &_log; }

  CollectedLog& log() { return _log; }

 private:
  CollectedLog _log;
  Platform _platform = Platform::current();
  ScopedPlatform _scope{_platform};
};

}  // namespace installer::ctl::lint
