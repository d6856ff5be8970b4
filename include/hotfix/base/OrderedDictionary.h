#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hotfix/base/KeyedHash.h"
#include "hotfix/base/PlaceIndex.h"

namespace installer {

/// A dictionary with text keys that remembers the order in which keys were first stored. Settings
/// files are rewritten whole, so a stable order keeps a rewrite readable beside the old file.
/// Replacing a value keeps the key's place; removing a key and storing it again puts it last.
/// Equality looks at keys and values, not at the order.
///
/// Keys come from other people's files, so that the hash is keyed: no choice of keys makes a search
/// slow. `Hash` is for tests.
template <class Value, class Hash = KeyedHash>
class OrderedDictionary {
 public:
  using Entry = std::pair<std::string, Value>;  ///< key and value
  /// Goes through the entries in the order in which their keys were first stored; valid until the
  /// next change.
  using const_iterator = typename std::vector<Entry>::const_iterator;

  OrderedDictionary() = default;  ///< without entries
  /// Holds the entries in their order; of several with one key the last value, at the first place.
  OrderedDictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) set(entry.first, entry.second);
  }

  /// Whether there is no entry.
  bool empty() const { return _entries.empty(); }
  /// The number of entries.
  std::size_t size() const { return _entries.size(); }
  /// The first entry; end() when there is none.
  const_iterator begin() const { return _entries.begin(); }
  /// Behind the last entry.
  const_iterator end() const { return _entries.end(); }

  /// Has room for so many entries, to which it need not grow then.
  void reserve(std::size_t count) {
    _entries.reserve(count);
    _places.reserve(count);
  }

  /// The value stored under `key`, owned by the dictionary and valid until its next change;
  /// nullptr when there is none.
  const Value* find(std::string_view key) const {
    const std::optional<std::size_t> place = placeOf(key, Hash{}(key));
    return place ? &_entries[*place].second : nullptr;
  }

  /// Stores the value under `key`, in place of what was there.
  void set(std::string key, Value value) {
    const std::size_t hash = Hash{}(key);
    if (const std::optional<std::size_t> place = placeOf(key, hash)) {
      _entries[*place].second = std::move(value);
      return;
    }
    _places.makeRoomFor(_entries.size() + 1);  // an entry without a place would be there twice
    _entries.emplace_back(std::move(key), std::move(value));
    _places.add(hash, _entries.size() - 1);
  }

  /// Removes the entry; nothing happens when there is none.
  void remove(std::string_view key) {
    const std::optional<std::size_t> place = placeOf(key, Hash{}(key));
    if (!place) return;
    _entries.erase(_entries.begin() + static_cast<std::ptrdiff_t>(*place));
    _places.remove(*place);
  }

  /// Removes every entry.
  void clear() {
    _entries.clear();
    _places.clear();
  }

  friend bool operator==(const OrderedDictionary& left, const OrderedDictionary& right) {
    if (left.size() != right.size()) return false;
    for (const Entry& entry : left) {
      const Value* other = right.find(entry.first);
      if (other == nullptr || !(*other == entry.second)) return false;
    }
    return true;
  }

  /// @cond
  // No text is nullptr.
  const Value* find(std::nullptr_t key) const = delete;
  void set(std::nullptr_t key, Value value) = delete;
  void remove(std::nullptr_t key) = delete;
  /// @endcond

 private:
  [[nodiscard]] std::optional<std::size_t> placeOf(std::string_view key, std::size_t hash) const {
    return _places.find(hash, [&](std::size_t place) { return _entries[place].first == key; });
  }

  std::vector<Entry> _entries;
  PlaceIndex _places;
};

}  // namespace installer
