#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace installer {

// Real numbers as XML property lists write them, the same in every locale. The standard library's
// own conversions are younger than the oldest system that the installer runs on.

// A decimal number, "inf", "infinity" or "nan" in any case, be it with a word in brackets behind
// the last, with or without a "-", and nothing around it. nullopt for any other text, and for a
// number that a double cannot hold, be it too small: writing it back would change it.
std::optional<double> realFromText(std::string_view text);

// The shortest text that is read as the same number, in the shorter of both notations; "nan",
// "+infinity" and "-infinity".
std::string textFromReal(double number);

}  // namespace installer
