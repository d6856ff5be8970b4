#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "hotfix/base/XmlDocument.h"

// XML documents that are read, changed in places and written back with everything else as it was.
namespace installer::xml {

// Of one document. Texts do not count: each has another kind of node beside it.
inline constexpr std::size_t kMaximumNodes = 1'000'000;

// Null for anything that is not well-formed or exceeds the bounds (see Parser and kMaximumNodes).
// Entity references, CDATA sections and the declared encoding are kept; nothing outside the
// document is loaded. Nothing is written to standard error.
Document parse(std::string_view bytes);

// Puts every child of an element that holds only elements (comments and processing instructions
// among them) on a line of its own, two blanks deeper than its parent. Elements with text of their
// own are left alone with all below them, and so is what stands under xml:space="preserve".
void reindent(_xmlDoc& document);

// The document in the encoding that it declares, UTF-8 without one. What the encoding lacks becomes
// character references. nullopt when the document has come to hold what XML cannot tell (control
// characters, say).
[[nodiscard]] std::optional<std::string> serialize(_xmlDoc& document);

}  // namespace installer::xml
