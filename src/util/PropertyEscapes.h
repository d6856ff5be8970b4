#pragma once

#include <string>
#include <string_view>

// The escaping that properties files are written with. What is appended is pure ASCII whatever the
// text holds.
namespace installer {

void appendEscapedKey(std::string_view key, std::string& to);
void appendEscapedValue(std::string_view value, std::string& to);

// Four lower-case hexadecimal digits, most significant first.
void appendHexDigits(char16_t unit, std::string& to);

}  // namespace installer
