#pragma once

#include <bit>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hotfix/base/KeyedHash.h"

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

  /// The value stored under `key`, owned by the dictionary and valid until its next change;
  /// nullptr when there is none.
  const Value* find(std::string_view key) const {
    const std::optional<std::size_t> place = placeOf(key);
    return place ? &_entries[*place].second : nullptr;
  }

  /// Stores the value under `key`, in place of what was there.
  void set(std::string key, Value value) {
    if (const std::optional<std::size_t> place = placeOf(key)) {
      _entries[*place].second = std::move(value);
      return;
    }
    _entries.emplace_back(std::move(key), std::move(value));
    if (_entries.size() * 2 > _slots.size()) {
      rebuildSlots();
    } else {
      fillSlot(_entries.size() - 1);
    }
  }

  /// Removes the entry; nothing happens when there is none.
  void remove(std::string_view key) {
    const std::optional<std::size_t> place = placeOf(key);
    if (!place) return;
    _entries.erase(_entries.begin() + static_cast<std::ptrdiff_t>(*place));
    rebuildSlots();
  }

  /// Removes every entry.
  void clear() {
    _entries.clear();
    _slots.clear();
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
  static constexpr std::size_t kFree = std::numeric_limits<std::size_t>::max();

  [[nodiscard]] std::optional<std::size_t> placeOf(std::string_view key) const {
    if (_slots.empty()) return std::nullopt;
    for (std::size_t slot = firstSlot(key); _slots[slot] != kFree; slot = nextSlot(slot))
      if (_entries[_slots[slot]].first == key) return _slots[slot];
    return std::nullopt;
  }

  void fillSlot(std::size_t place) {
    std::size_t slot = firstSlot(_entries[place].first);
    while (_slots[slot] != kFree) slot = nextSlot(slot);
    _slots[slot] = place;
  }

  /// At least half of the slots stay free, so that a search ends soon.
  void rebuildSlots() {
    _slots.assign(std::bit_ceil(_entries.size() * 4), kFree);
    for (std::size_t place = 0; place < _entries.size(); ++place) fillSlot(place);
  }

  std::size_t firstSlot(std::string_view key) const { return Hash{}(key) & (_slots.size() - 1); }
  std::size_t nextSlot(std::size_t slot) const { return (slot + 1) & (_slots.size() - 1); }

  std::vector<Entry> _entries;
  /// Open hash table: the entries' places, kFree in a slot without one. A power of two long; empty
  /// before the first entry.
  std::vector<std::size_t> _slots;
};

}  // namespace installer
