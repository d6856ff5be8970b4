#include "ctl/Json.h"

namespace installer::ctl {

Json jsonOf(const std::optional<std::string>& text) {
  return text ? Json(*text) : Json(nullptr);
}

std::string textOf(const Json& document) {
  return document.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace installer::ctl
