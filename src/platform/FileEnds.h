#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

#include "hotfix/platform/FileError.h"

namespace installer {

// How many bytes of a file are wanted, from its beginning and from its end.
struct EndSizes {
  std::size_t head = 0;
  std::size_t tail = 0;
};

// A regular file's beginning and end, as it was when it was opened.
struct FileEnds {
  std::string head;
  std::string tail;           // empty when the head is all there is
  std::uint64_t leftOut = 0;  // bytes between the two
  std::uint64_t size = 0;     // of the file, bytes
  std::time_t modified = 0;
  bool hasOtherNames = false;  // it is another file, too, maybe one that is nobody's business
};

// Reads them without waiting for anything and however long the file is. Links in the folder's own
// path are followed; beneath it, `below` passes through none and is none. nullopt, with `error`
// set, for what is missing, no regular file, or kept from this process.
[[nodiscard]] std::optional<FileEnds> readEnds(const std::string& folder, const std::string& below,
                                               const EndSizes& sizes, FileError& error);

}  // namespace installer
