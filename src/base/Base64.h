#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace installer {

// With padding, in one line.
std::string encodeBase64(std::string_view bytes);

// White space counts for nothing. nullopt for any other character outside the alphabet and for a
// text whose length or padding is wrong.
[[nodiscard]] std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace installer
