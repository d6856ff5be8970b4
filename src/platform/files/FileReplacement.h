#pragma once

#include <sys/types.h>

#include <optional>
#include <string_view>

#include "platform/files/FileChanges.h"
#include "platform/files/Opening.h"
#include "platform/files/Ownership.h"

namespace installer {

// What a file that replaces another one brings along.
struct NewFile {
  std::string_view bytes;
  std::optional<mode_t> mode;  // absent: 0666 less the creation mask
  Ownership ownership;         // given as far as the system allows
};

// Puts the file in place of whatever file or link stands there: temporary file, all bytes, owner,
// mode, fsync, rename, fsync of the folder. A folder there is a failure. After a failure before the
// rename nothing has changed. Answers 0 or the system's error number.
[[nodiscard]] int replaceFile(FileChanges& changes, const Place& place, const NewFile& file);

}  // namespace installer
