#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/files/Opening.h"

namespace installer {

// The bytes of the open file from its offset to its end; nullopt, with errno set, when it cannot be
// read, is not open, or holds more than `maximum` bytes.
[[nodiscard]] std::optional<std::string> readWhole(const RegularFile& file, std::size_t maximum);

}  // namespace installer
