#pragma once

#include <string>
#include <string_view>

// How documents write what markup, and reading again, would take for something else.
namespace installer::xml {

// A text between tags: a bare carriage return would be read as a line feed.
void appendEscaped(std::string_view text, std::string& to);

// An attribute's value in quotation marks: bare tabs and line feeds would be read as blanks.
void appendEscapedValue(std::string_view value, std::string& to);

}  // namespace installer::xml
