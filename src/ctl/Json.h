#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace installer::ctl {

// Answers for programs. Each is one object that begins with "schema":
// "hotfixctl/<command>/<number>"; the number grows when something that a reader relies on changes.
// Keys keep their order.
using Json = nlohmann::ordered_json;

// null for an absent text.
Json jsonOf(const std::optional<std::string>& text);

// The whole document with a line feed, in ASCII: what it tells of files and arguments does nothing
// to a terminal. Bytes that are no UTF-8 (in paths) become U+FFFD.
std::string textOf(const Json& document);

}  // namespace installer::ctl
