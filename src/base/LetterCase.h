#pragma once

#include <string>
#include <string_view>

// Letters without regard to case, as Unicode tells it: no locale, no data file. Bytes that are not
// UTF-8 stay as they are.
namespace installer::letterCase {

// Character by character, by the simple mapping to lower case.
std::string lowered(std::string_view text);

// By full case folding, for which "ß" and "SS" are the same, as are the two small sigmas.
bool equalIgnoringCase(std::string_view left, std::string_view right);

// The same of the text's beginning; it ends behind a whole character, so that "ß" does not begin
// with "s". Every text begins with an empty one.
bool beginsIgnoringCase(std::string_view text, std::string_view prefix);

// What texts have in common that are equal but for letter case (by full case folding) and for the
// form in which Unicode spells a letter with its marks: one name to a file system that cares for
// neither.
std::string withoutCaseAndForm(std::string_view text);

// The text with each letter and its marks as one character where there is one (NFC).
std::string composed(std::string_view text);

}  // namespace installer::letterCase
