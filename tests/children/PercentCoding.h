#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// How the fields of a child's scripts and records are written, for the tests and for the child: it
// is linked to nothing of the tests.

// Printable ASCII but "%" stands for itself, every other byte is a percent sign and two digits.
inline std::string percentEncoded(std::string_view text) {
  static const char* digits = "0123456789ABCDEF";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > 0x20 && byte < 0x7F && byte != '%') {
      result += c;
    } else {
      result += '%';
      result += digits[byte >> 4];
      result += digits[byte & 15];
    }
  }
  return result;
}

inline std::string percentDecoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
    i += 2;
  }
  return result;
}
