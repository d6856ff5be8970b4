#pragma once

#include <string>

namespace installer {

/// Why an operation failed. `code` follows the platform's numbers where one exists; numbers below
/// zero are ours.
struct FileError {
  static constexpr int kMissing = 260;  ///< nothing is there, for certain
  static constexpr int kExists = 516;   ///< something at the destination already
  static constexpr int kOther = 512;    ///< anything else
  static constexpr int kNoFile = -1;    ///< there is something, but no file that can be read
  static constexpr int kNoLocks = -2;   ///< the file system that the folder is on has no locks
  static constexpr int kClosed = 257;   ///< a folder that is kept from this process

  int code = kOther;        ///< one of the above
  std::string description;  ///< for a log line: what, where, and the system's reason
};

}  // namespace installer
