#pragma once

#include <cstddef>
#include <string_view>

namespace installer {

/// Hashes texts so that nobody outside the process can choose many with one hash: the function has
/// a key, drawn at random by each process. Hashes are of no use in another process or in a file.
struct KeyedHash {
  std::size_t operator()(std::string_view text) const;
};

}  // namespace installer
