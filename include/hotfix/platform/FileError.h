#pragma once

#include <string>

namespace installer {

/// Why an operation failed. `code` follows the platform's numbers where one exists.
struct FileError {
  static constexpr int kMissing = 260;  ///< nothing at the source
  static constexpr int kExists = 516;   ///< something at the destination already
  static constexpr int kOther = 512;    ///< anything else

  int code = kOther;        ///< one of the above
  std::string description;  ///< for a log line: what, where, and the system's reason
};

}  // namespace installer
