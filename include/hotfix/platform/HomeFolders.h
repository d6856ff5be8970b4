#pragma once

#include <string>
#include <string_view>

/// Home folders in paths, as the user database and the environment tell them.
namespace installer::path {

/// A leading "~" or "~name" replaced by that user's home folder; a path without one, or with an
/// unknown user, comes back as it is. Homes come from the user database; for "~" alone, the
/// effective user, HOME stands in when the database knows none.
std::string expandingTilde(std::string_view path);

}  // namespace installer::path
