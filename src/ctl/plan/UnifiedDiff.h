#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace installer::ctl {

// Whether the bytes can be told line by line: there is no zero byte among them.
bool isText(std::string_view bytes);

// How a text becomes another one, in the form that patch reads, without the two lines with the
// names: three lines around each change. nullopt when they are too long for it; empty when they are
// equal.
std::optional<std::string> unifiedDiff(std::string_view before, std::string_view after);

}  // namespace installer::ctl
