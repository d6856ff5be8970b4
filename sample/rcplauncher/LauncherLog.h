#pragma once

#include <filesystem>
#include <string>

namespace sample {

// The launcher's own log, one line an event. A log that cannot be written is no reason to stop.
class LauncherLog {
 public:
  explicit LauncherLog(std::filesystem::path file) : _file(std::move(file)) {}

  void write(const std::string& text) const;

 private:
  std::filesystem::path _file;
};

}  // namespace sample
