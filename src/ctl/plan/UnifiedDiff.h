#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace installer::ctl {

// How a text becomes another one, in the form that patch reads, without the two lines with the
// names: three lines around each change. nullopt when one of them is no text, or they are too long
// for it; empty when they are equal.
std::optional<std::string> unifiedDiff(std::string_view before, std::string_view after);

}  // namespace installer::ctl
