#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/platform/FileError.h"

namespace installer {

class TextDictionary;

/// Whether a save that fails leaves an error line with the reason.
enum class FailedSave { isTold, isPassedOver };

/// A Java-style properties file in this installer's own dialect, held as a dictionary of texts and
/// bound to its file. The dialect differs from Java's on purpose (a continued line loses its key,
/// an escaped separator still separates, "!" begins no comment, "\u" is not decoded while reading):
/// files that were rewritten here are read again by the same rules.
///
/// Files are ISO 8859-1; what is written is pure ASCII. Comments, blank lines and duplicates of a
/// key do not survive a rewrite; entries keep the order in which their keys were first seen.
class JavaProperties {
 public:
  /// No entries, no file.
  JavaProperties();
  /// The same entries, bound to the same file.
  /// @{
  JavaProperties(const JavaProperties& other);
  JavaProperties& operator=(const JavaProperties& other);
  /// @}
  ~JavaProperties();

  /// Binds to `file` with a leading "~" expanded and reads it when it exists. A missing file gives
  /// an empty object whose save creates it. One that exists but cannot be read gives an empty
  /// object that refuses to save over it: the file is worth more than our entries. Nothing is
  /// logged before such a save.
  explicit JavaProperties(const std::optional<std::string>& file);
  /// The same; `failedSave` says whether a save that fails leaves an error line.
  JavaProperties(const std::optional<std::string>& file, FailedSave failedSave);

  /// Reads the bound file into the entries; used by the constructor.
  void initDictionary();

  /// Why the bound file, which is there, could not be read; nullopt when it was read or is missing.
  [[nodiscard]] const std::optional<FileError>& readError() const { return _readError; }

  /// The value, its escapes as they stand in the file; nullopt when the key is absent.
  [[nodiscard]] std::optional<std::string> getPropertyForKey(const std::string& key) const;

  /// True when stored. An absent value or key is refused: one error line, nothing changes, false.
  [[nodiscard]] bool setProperty(const std::optional<std::string>& value,
                                 const std::optional<std::string>& forKey);

  /// Nothing happens when the key is absent.
  void removePropertyForKey(const std::string& key);

  /// The keys, in order.
  std::vector<std::string> propertyNames() const;
  /// The same, under the name that its callers know.
  std::vector<std::string> allProperties() const;

  /// Writes one "key=value" line an entry (none for an empty key) to `path`, "~" expanded, or to
  /// the bound file for nullopt. False when there is no target, the bound file could not be read,
  /// or the disk refuses [error, unless passed over]; the old file is then untouched. The binding
  /// does not change.
  [[nodiscard]] bool savePropertiesToFile(const std::optional<std::string>& path) const;

  /// Takes over every entry of the properties file at `path`, which wins on a clash, and saves to
  /// the bound file: the save's result. True at once for nullopt, false when no file is there;
  /// nothing is changed or saved then.
  [[nodiscard]] bool mergeWithJavaProperties(const std::optional<std::string>& path);

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit JavaProperties);
  HOTFIX_DELETED_FOR_NULL(void getPropertyForKey);
  HOTFIX_DELETED_FOR_NULL(void setProperty);
  HOTFIX_DELETED_FOR_NULL(void removePropertyForKey);
  HOTFIX_DELETED_FOR_NULL(void savePropertiesToFile);
  HOTFIX_DELETED_FOR_NULL(void mergeWithJavaProperties);
  /// @endcond

 private:
  std::unique_ptr<TextDictionary> _dict;  // never null
  std::optional<std::string> _file;       // "~" expanded
  std::optional<FileError> _readError;
  FailedSave _failedSave = FailedSave::isTold;
};

}  // namespace installer
