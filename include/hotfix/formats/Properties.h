#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/platform/FileError.h"

namespace installer {

/// Settings in one property-list file: the whole file is loaded when the object is made and written
/// whole by a save, so two objects on the same file see each other only through the disk. Values
/// that are no texts read as absent and survive a rewrite.
class Properties {
 public:
  /// An empty store without a file.
  Properties();

  /// Binds to `file`, "~" expanded. One that is missing or no dictionary list gives a store without
  /// a dictionary, in which nothing can be stored and which never writes. Nothing is logged.
  explicit Properties(const std::string& file);

  /// Why there is no dictionary: FileError::kMissing when there is no file, another code when
  /// there is one that cannot be read. nullopt when there is a dictionary.
  [[nodiscard]] const std::optional<FileError>& readError() const { return _readError; }

  /// The text stored under `key`; nullopt for an absent or missing key and for what is no text.
  [[nodiscard]] std::optional<std::string> getPropertyForKey(
      const std::optional<std::string>& key) const;
  /// Whether the key has a value, be it one of another type than text.
  bool hasPropertyForKey(const std::string& key) const;

  /// Stores the value, or removes the key for an absent value. False without a dictionary or a key.
  /// A path of other bytes than UTF-8 is stored as the text that XML can hold, so that the save
  /// keeps the rest.
  [[nodiscard]] bool setProperty(const std::optional<std::string>& value,
                                 const std::optional<std::string>& forKey);

  /// Nothing happens for an absent or missing key. In memory only, until the next save.
  void removePropertyForKey(const std::optional<std::string>& key);
  /// Leaves an empty store; one without a dictionary stays without. In memory only.
  void removeAllProperties();

  /// Writes an XML list to `path`, "~" expanded, or to the bound file for nullopt. False without a
  /// dictionary; true otherwise, also when there is no target or the disk refuses [error], by
  /// design.
  [[nodiscard]] bool savePropertiesToFile(const std::optional<std::string>& path) const;

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit Properties);
  HOTFIX_DELETED_FOR_NULL(void getPropertyForKey);
  HOTFIX_DELETED_FOR_NULL(void hasPropertyForKey);
  HOTFIX_DELETED_FOR_NULL(void setProperty);
  HOTFIX_DELETED_FOR_NULL(void removePropertyForKey);
  HOTFIX_DELETED_FOR_NULL(void savePropertiesToFile);
  /// @endcond

 private:
  friend class Configuration;

  std::optional<PropertyList::Dictionary> _dict;
  std::optional<std::string> _file;  // "~" expanded
  std::optional<FileError> _readError;
};

}  // namespace installer
