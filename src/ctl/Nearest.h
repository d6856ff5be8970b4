#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace installer::ctl {

// The word that was most likely meant by `word`: the one with the fewest letters that are missing,
// wrong, too many or exchanged with their neighbour, letter case aside; of several the first.
// nullopt when none is near.
[[nodiscard]] std::optional<std::string> nearest(std::string_view word,
                                                 const std::vector<std::string>& known);

}  // namespace installer::ctl
