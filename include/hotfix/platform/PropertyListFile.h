#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/platform/FileError.h"

/// Property lists that are files.
namespace installer::PropertyList {

/// Reads the file at `path` as a list whose root is a dictionary. nullopt when there is no regular
/// file, it cannot be read, or it holds anything else. Nothing is logged.
[[nodiscard]] std::optional<Dictionary> readDictionary(const std::string& path);
/// The same; `error` receives why there is none: FileError::kMissing when there is no file.
[[nodiscard]] std::optional<Dictionary> readDictionary(const std::string& path, FileError& error);

/// Replaces the file at `path` by the XML form. False when it cannot be told in XML or the disk
/// refuses [error]; the old file is then untouched.
[[nodiscard]] bool writeDictionary(const Dictionary& dictionary, const std::string& path);

/// @cond
// No text is nullptr; an absent one is std::nullopt.
HOTFIX_DELETED_FOR_NULL(void readDictionary);
HOTFIX_DELETED_FOR_NULL(void writeDictionary);
/// @endcond

}  // namespace installer::PropertyList
