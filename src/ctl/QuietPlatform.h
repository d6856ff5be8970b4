#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Platform.h"
#include "platform/SystemLog.h"

namespace installer::ctl {

// The platform in force with a log of its own, for this object's lifetime: what the library has to
// say while it is asked questions is not an installer's line. Its errors are kept.
class QuietPlatform {
 public:
  QuietPlatform() : _platform(Platform::current()) { _platform.log = &_log; }

  // The errors that were told since, each once.
  const std::vector<std::string>& errors() const { return _log.errors; }
  void forgetErrors() { _log.errors.clear(); }

 private:
  struct Log : SystemLog {
    void write(LogLevel level, std::string_view message) override;
    int addFile(int /*descriptor*/) override { return 0; }
    void removeFile(int /*descriptor*/) override {}

    std::vector<std::string> errors;
  };

  Log _log;
  Platform _platform;
  ScopedPlatform _scope{_platform};
};

}  // namespace installer::ctl
