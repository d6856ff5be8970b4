#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace installer::ctl::package {

// Settings that somebody has written in UTF-8 as the platform and the installer read them: plain
// ASCII in which \u escapes stand for other letters, lines that end with a line feed, no byte order
// mark. nullopt when the text is no UTF-8: `line`, from 1, is then where.
[[nodiscard]] std::optional<std::string> plainSettings(std::string_view text, std::size_t& line);

}  // namespace installer::ctl::package
