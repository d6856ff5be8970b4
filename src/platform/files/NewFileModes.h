#pragma once

#include <sys/stat.h>

#include <optional>

#include "platform/posix/Descriptor.h"

namespace installer {

// Which bits of the modes that they are asked for the new files of one folder get. The process's
// creation mask and the folder's own rules (default ACLs) take bits away, each one always or never;
// a file system can also have modes of its own. What is known of one file saves the look at others.
class NewFileModes {
 public:
  // Whether the file that was made in the folder with this mode has it, `seen` being the file since
  // then; absent: it is looked at when needed.
  bool isExact(const Descriptor& file, mode_t mode, std::optional<struct stat> seen);

 private:
  mode_t _granted = 0;
  mode_t _taken = 0;
  bool _isOwn = false;  // a file has got bits that it was not made with
};

}  // namespace installer
