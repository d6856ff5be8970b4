#pragma once

#include <cstddef>
#include <string_view>

namespace installer::xml {

// Bytes of one tag or declaration, what stands in quotation marks not counted.
inline constexpr std::size_t kMaximumMarkup = std::size_t{16} << 10;

// Whether no tag and no declaration is longer. The XML library compares each attribute of a tag
// with all before it, and each choice of a declaration, before it tells anybody about them: this is
// asked first. `text` is a document or what an entity stands for, in UTF-8. Behind its first error
// XML is not understood; nobody may read on there.
bool hasShortMarkup(std::string_view text);

}  // namespace installer::xml
