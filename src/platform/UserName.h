#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace installer {

// The account of that number; nullopt when the user database has none.
[[nodiscard]] std::optional<std::string> nameOfUser(uid_t user);

}  // namespace installer
