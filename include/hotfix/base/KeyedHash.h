#pragma once

#include <cstddef>
#include <string_view>

namespace installer {

/// Hashes texts so that nobody outside the process can choose many with one hash: the function has
/// a key, drawn at random by each process. Hashes are of no use in another process or in a file.
struct KeyedHash {
  /// The same for the same text as long as the process lives.
  std::size_t operator()(std::string_view text) const;

  /// @cond
  // No text is nullptr.
  std::size_t operator()(std::nullptr_t text) const = delete;
  /// @endcond
};

}  // namespace installer
