#pragma once

#include <string>
#include <string_view>

#include "base/TextDictionary.h"

namespace installer {

// Takes the entries of a properties file's text over into `entries`; a key read again replaces its
// earlier value. `latin1` are the file's bytes, one character each; keys and values come out as
// UTF-8. Every text can be read: there are no errors.
void readJavaProperties(std::string latin1, TextDictionary& entries);

// A line as it is read, without the white space at its ends. Of Latin-1.
std::string_view trimmedLine(std::string_view line);

}  // namespace installer
