#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/support/Item.h"

// What support answers.
namespace installer::ctl::support {

// What may go into the archive.
std::string listText(const std::vector<Item>& items, const Style& style);
// What became of it.
std::string resultText(const std::vector<Collected>& collected, const std::string& archive,
                       const Style& style);

// Both for programs, and the index in the archive. `archive` is absent where none was wanted.
Json documentOf(const std::vector<Collected>& collected, const std::optional<std::string>& archive,
                int status);

}  // namespace installer::ctl::support
