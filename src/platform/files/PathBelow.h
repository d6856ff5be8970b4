#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace installer {

// What is left of a path behind the folder's own: relative, as it is written, empty for the folder
// itself. nullopt when the path does not begin with the folder's components or climbs out of it
// again. Both are taken by their names alone: no link is looked at, and a relative path is never
// below an absolute one.
std::optional<std::string> restBelow(std::string_view folder, std::string_view path);

// The path without the slashes and dots at its end, which lead nowhere. At least one byte stays.
std::string withoutIdleEnd(std::string_view path);

// Whether the path names nothing but the root, or the folder that the process is in.
bool hasNoComponents(std::string_view path);

}  // namespace installer
