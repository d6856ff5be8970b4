#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "hotfix/base/PropertyList.h"

// What the XML form of property lists is made of.
namespace installer::PropertyList {

inline constexpr std::string_view kUidKey = "CF$UID";
// As we and the platform write it.
inline constexpr std::string_view kUsualType =
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">";

enum class Tag { plist, dict, array, key, string, integer, real, date, data, yes, no };

std::optional<Tag> tagNamed(std::string_view name);

// What an element says that holds text; nullopt when it says nothing of its kind.
[[nodiscard]] std::optional<Value> leafFromText(Tag tag, std::string&& text);

}  // namespace installer::PropertyList
