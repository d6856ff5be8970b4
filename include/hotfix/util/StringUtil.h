#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hotfix/base/DeletedForNull.h"

namespace installer {

/// Operations on texts without state. Text is UTF-8; where 16-bit units matter (escaping, character
/// positions) it is taken apart into UTF-16 and put together again. Bytes that are not UTF-8 count
/// as the Latin-1 characters of the same numbers, so that they survive as something.
class StringUtil {
 public:
  StringUtil() = delete;

  /// The escaped form of a property key: blank, "#", "!", "=", ":" and backslash get a backslash;
  /// every unit outside 0x20 to 0x7E becomes "\u" and four lower-case digits.
  static std::string convertNSStringTo8859_1Key(std::string_view string);

  /// The escaped form of a property value: as a key, but a blank stays bare and a backslash before
  /// "u" stays single, so that escapes already in the text pass through.
  static std::string convertNSStringTo8859_1Value(std::string_view string);

  /// Appends exactly four lower-case hexadecimal digits, most significant first.
  static void addHexDigits(char16_t character, std::string& toString);

  /// Each "\u" that at least four more units follow is replaced, with them, by the unit that they
  /// spell; among the four, what is no hexadecimal digit counts for nothing but is consumed. A lone
  /// half of a surrogate pair is kept as its three-byte form.
  static std::string convertUnicode2Characters(std::string_view string);

  /// The 16-bit unit at `index` as a text of its own; nullopt for an absent text and for an index
  /// that is negative or not below the length in units.
  [[nodiscard]] static std::optional<std::string> charAtIndex(
      long index, const std::optional<std::string>& ofString);

  /// `source` with every occurrence of `target` replaced, searched from the end backwards ("aaa"
  /// with "aa" replaced by "b" gives "ab"). An empty target occurs nowhere.
  static std::string stringByReplacingOccurrencesOfString(std::string_view source,
                                                          std::string_view target,
                                                          std::string_view withString);

  /// "true" or "false".
  static std::string boolToString(bool boolean);

  /// Does nothing; kept because other installers call it.
  static void addTranslationSignToString(const std::string& string);

  /// The text between two double quotes; quotes inside are not escaped.
  static std::string addQuotesToString(std::string_view string);

  /// The volume that holds `path`: the folder directly below "/Volumes" on the way up, else "/".
  /// nullopt for nullopt. A leading "~" is expanded; the disk is not consulted.
  [[nodiscard]] static std::optional<std::string> getVolume(const std::optional<std::string>& path);

  /// `pattern` with its "%@" replaced by the strings in order; missing ones are empty, surplus ones
  /// ignored, nothing else is a directive. nullopt for an absent pattern.
  [[nodiscard]] static std::optional<std::string> bindString(
      const std::optional<std::string>& pattern, const std::vector<std::string>& with);

  /// @cond
  // A text is no truth: "false" would count as true.
  static std::string boolToString(const void* text) = delete;
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(static void convertNSStringTo8859_1Key);
  HOTFIX_DELETED_FOR_NULL(static void convertNSStringTo8859_1Value);
  HOTFIX_DELETED_FOR_NULL(static void convertUnicode2Characters);
  HOTFIX_DELETED_FOR_NULL(static void charAtIndex);
  HOTFIX_DELETED_FOR_NULL(static void stringByReplacingOccurrencesOfString);
  HOTFIX_DELETED_FOR_NULL(static void addTranslationSignToString);
  HOTFIX_DELETED_FOR_NULL(static void addQuotesToString);
  HOTFIX_DELETED_FOR_NULL(static void getVolume);
  HOTFIX_DELETED_FOR_NULL(static void bindString);
  /// @endcond
};

}  // namespace installer
