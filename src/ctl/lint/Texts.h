#pragma once

#include <string>
#include <string_view>

// Texts of descriptions, manifests and settings.
namespace installer::ctl::lint {

// White space in ASCII.
inline constexpr std::string_view kBlanks = " \t\r\n\f\v";

std::string_view withoutBlanks(std::string_view text);
// Letters of ASCII alone.
std::string inSmallLetters(std::string_view text);

// The first placeholder in the text, or something like one, that is not `known`; empty when there
// is none. `known` is written with its signs.
std::string_view unknownPlaceholder(std::string_view text, std::string_view known);

// Whether the way leads to a place that is not below where it begins, by its words alone.
bool leavesItsRoot(std::string_view way);

}  // namespace installer::ctl::lint
