#pragma once

#include <optional>
#include <string>

// Models how the return code that the launcher left is judged. The digits are judged as a text, so
// that their number does not matter.
namespace installer::model {

inline int provisioningResult(std::optional<std::string> rc) {
  if (!rc) return -1;
  std::string& text = *rc;
  while (text.starts_with(" ") || text.starts_with("\t")) text.erase(0, 1);
  bool negative = false;
  if (text.starts_with("+") || text.starts_with("-")) {
    negative = text.starts_with("-");
    text.erase(0, 1);
  }
  std::string digits;
  for (const char character : text) {
    if (character < '0' || character > '9') break;
    if (digits != "" || character != '0') digits += character;
  }
  if (digits == "") return 0;
  return digits == "2" && !negative ? 0 : -1;
}

}  // namespace installer::model
