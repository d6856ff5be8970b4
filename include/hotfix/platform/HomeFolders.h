#pragma once

#include <string>
#include <string_view>

#include "hotfix/base/DeletedForNull.h"

/// Home folders in paths, as the user database and the environment tell them.
namespace installer::path {

/// A leading "~" or "~name" replaced by that user's home folder; a path without one, or with an
/// unknown user, comes back as it is. Homes come from the user database; for "~" alone, the
/// effective user, HOME stands in when the database knows none.
std::string expandingTilde(std::string_view path);

/// @cond
// No text is nullptr; an absent one is std::nullopt.
HOTFIX_DELETED_FOR_NULL(void expandingTilde);
/// @endcond

}  // namespace installer::path
