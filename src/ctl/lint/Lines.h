#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ctl/lint/RootKeys.h"

// Lines of files, for people who look there. Lines count from 1.
namespace installer::ctl::lint {

// The line of the byte at that place.
std::size_t lineAt(std::string_view bytes, std::size_t place);

// The line of the text's first occurrence; nullopt where there is none.
[[nodiscard]] std::optional<std::size_t> lineOf(std::string_view bytes, std::string_view text);

// The lines of places that ascend.
std::vector<std::size_t> linesAt(std::string_view bytes, const std::vector<std::size_t>& places);

// Looks for one text behind the other, in time that grows with the bytes alone: once a text is not
// found, no other is looked for.
class LineSearch {
 public:
  // The bytes must outlive the object.
  explicit LineSearch(std::string_view bytes) : _bytes(bytes) {}

  // The line of the text's first occurrence behind the last one that was found.
  [[nodiscard]] std::optional<std::size_t> next(std::string_view text);

 private:
  std::string_view _bytes;
  std::size_t _place = 0;  // of what was found last
  std::size_t _line = 1;   // its line
  std::size_t _next = 0;   // where the search goes on
  bool _isLost = false;
};

// The line of the root's key, of several the last, which counts; `keys` are the list's. nullopt
// where it cannot be told from others: in comments, say, or in dictionaries below the root.
[[nodiscard]] std::optional<std::size_t> lineOfKey(std::string_view list, const RootKeys& keys,
                                                   std::string_view key);

}  // namespace installer::ctl::lint
