#pragma once

#include <string>
#include <string_view>

#include "hotfix/base/DeletedForNull.h"

/// The platform's rules for path components. They differ from std::filesystem::path: an appended
/// component is always put below the path even when it begins with "/", runs of slashes collapse,
/// and no result but "/" ends in a slash. Paths are bytes; the disk is never consulted.
namespace installer::path {

/// "/a" + "b/c" gives "/a/b/c"; "/a/" + "/b/" gives "/a/b"; "" + "b" gives "b"; "/a/" + "" gives
/// "/a".
std::string appendingComponent(std::string_view path, std::string_view component);

/// "/a/b" and "/a/b/" give "/a"; "/a" and "/" give "/"; "a" and "" give "". ".." is a component
/// like any other.
std::string deletingLastComponent(std::string_view path);

/// "/a/b/" gives "b"; "/" gives "/"; "" gives "".
std::string lastComponent(std::string_view path);

/// @cond
// No text is nullptr; an absent one is std::nullopt.
HOTFIX_DELETED_FOR_NULL(void appendingComponent);
HOTFIX_DELETED_FOR_NULL(void deletingLastComponent);
HOTFIX_DELETED_FOR_NULL(void lastComponent);
/// @endcond

}  // namespace installer::path
