#include "ctl/report/Html.h"

#include "ctl/Shown.h"

namespace installer::ctl::report {

std::string html(std::string_view text) {
  std::string escaped;
  for (const char letter : shown(text)) {
    switch (letter) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += letter;
    }
  }
  return escaped;
}

}  // namespace installer::ctl::report
