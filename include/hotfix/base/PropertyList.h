#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/OrderedDictionary.h"

/// The platform's property lists: read in their XML and binary forms, written as XML. Files come
/// from users and from other programs, so the reader is bounded (see kMaximumDepth and
/// kMaximumObjects) and anything it does not understand makes the whole list unreadable instead of
/// dropping a piece of it.
namespace installer::PropertyList {

class Value;
using Array = std::vector<Value>;             ///< values in their order
using Dictionary = OrderedDictionary<Value>;  ///< values by key, in the order of the list

/// Bytes without a meaning of their own.
struct Data {
  std::string bytes;  ///< as they are, not encoded
  friend bool operator==(const Data&, const Data&) = default;
};

/// Seconds since 2001-01-01T00:00:00Z. XML lists hold whole seconds; a binary list may hold parts.
struct Date {
  double seconds = 0;  ///< negative before that moment
  friend bool operator==(const Date&, const Date&) = default;
};

/// A keyed archive's object reference; XML lists carry it as {CF$UID: integer}.
struct Uid {
  std::uint64_t number = 0;  ///< the object's place in the archive
  friend bool operator==(const Uid&, const Uid&) = default;
};

/// One property-list value. Integers beyond the signed range are held as unsigned ones; a value
/// that fits the signed range is always held as std::int64_t. Text is UTF-8.
class Value {
 public:
  /// The types that a value can have.
  using Storage = std::variant<std::string, bool, std::int64_t, std::uint64_t, double, Data, Date,
                               Uid, Array, Dictionary>;

  Value() = default;  ///< the empty text
  /// Each makes a value of its type that owns a copy of what it is given.
  /// @{
  Value(std::string text) : _storage(std::move(text)) {}
  Value(const char* text) : _storage(std::string(text)) {}
  Value(bool flag) : _storage(flag) {}
  Value(int number) : _storage(static_cast<std::int64_t>(number)) {}
  Value(std::int64_t number) : _storage(number) {}
  Value(std::uint64_t number);
  Value(double number) : _storage(number) {}
  Value(Data data) : _storage(std::move(data)) {}
  Value(Date date) : _storage(date) {}
  Value(Uid uid) : _storage(uid) {}
  Value(Array array) : _storage(std::move(array)) {}
  Value(Dictionary dictionary) : _storage(std::move(dictionary)) {}
  Value(std::nullptr_t) = delete;
  Value(const void* pointer) = delete;  // it would count as a truth
  /// @}

  /// The held value, owned by this object, when it is of type T; nullptr otherwise.
  template <class T>
  const T* as() const {
    return std::get_if<T>(&_storage);
  }
  /// The held value, moved out of this object, when it is of type T; nullopt otherwise.
  template <class T>
  std::optional<T> take() && {
    if (T* held = std::get_if<T>(&_storage)) return std::move(*held);
    return std::nullopt;
  }
  /// The held value, of whichever type; owned by this object.
  const Storage& storage() const { return _storage; }

  friend bool operator==(const Value&, const Value&) = default;

 private:
  Storage _storage;
};

inline constexpr int kMaximumDepth = 128;                  ///< levels of arrays and dictionaries
inline constexpr std::size_t kMaximumObjects = 1'000'000;  ///< values in one list

/// Reads an XML or binary list from memory. XML may be in any encoding that it declares. nullopt
/// when `bytes` is not a property list, is damaged, or exceeds the bounds above.
[[nodiscard]] std::optional<Value> parse(std::string_view bytes);

/// The same for a list whose root is a dictionary; nullopt for any other root, too.
[[nodiscard]] std::optional<Dictionary> parseDictionary(std::string_view bytes);

/// The XML form, UTF-8, one element a line, tab-indented, with a line feed at the end. nullopt when
/// the value cannot be told in XML without loss (a control character in a text, say): the bytes are
/// read back and compared before they are handed out. The one loss accepted is a date's part of a
/// second: the whole second in which the date lies is written. Years end with 9999.
[[nodiscard]] std::optional<std::string> serialize(const Value& value);

/// The same for a list whose root is the dictionary.
[[nodiscard]] std::optional<std::string> serializeDictionary(const Dictionary& dictionary);

/// The text stored under `key`; nullopt when the key is missing or holds another type.
[[nodiscard]] std::optional<std::string> textForKey(const Dictionary& dictionary,
                                                    std::string_view key);

/// The platform's reading of a value as a truth: a boolean as it is, a number other than 0, a text
/// that begins (after white space, line breaks among it, one sign and zeros) with Y, y, T, t or a
/// digit from 1 to 9. False for a missing key and for every other type.
bool booleanForKey(const Dictionary& dictionary, std::string_view key);

/// @cond
// No text is nullptr; an absent one is std::nullopt.
HOTFIX_DELETED_FOR_NULL(void parse);
HOTFIX_DELETED_FOR_NULL(void parseDictionary);
HOTFIX_DELETED_FOR_NULL(void textForKey);
HOTFIX_DELETED_FOR_NULL(void booleanForKey);
/// @endcond

}  // namespace installer::PropertyList
