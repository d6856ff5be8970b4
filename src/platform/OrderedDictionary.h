#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace installer {

// A dictionary with text keys that remembers the order in which keys were first stored. Settings
// files are rewritten whole, so a stable order keeps a rewrite readable beside the old file.
// Replacing a value keeps the key's place; removing a key and storing it again puts it last.
// Equality looks at keys and values, not at the order.
template <class Value>
class OrderedDictionary {
 public:
  using Entry = std::pair<std::string, Value>;
  using const_iterator = typename std::vector<Entry>::const_iterator;

  OrderedDictionary() = default;
  OrderedDictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) set(entry.first, entry.second);
  }

  bool empty() const { return _entries.empty(); }
  std::size_t size() const { return _entries.size(); }
  const_iterator begin() const { return _entries.begin(); }
  const_iterator end() const { return _entries.end(); }

  // The value stored under `key`, owned by the dictionary and valid until its next change;
  // nullptr when there is none.
  const Value* find(std::string_view key) const {
    const std::optional<std::size_t> place = placeOf(key);
    return place ? &_entries[*place].second : nullptr;
  }

  void set(std::string key, Value value) {
    if (const std::optional<std::size_t> place = placeOf(key)) {
      _entries[*place].second = std::move(value);
      return;
    }
    _entries.emplace_back(std::move(key), std::move(value));
    if (!_places.empty() || _entries.size() > kSmall) indexNewEntries();
  }

  void remove(std::string_view key) {
    const std::optional<std::size_t> place = placeOf(key);
    if (!place) return;
    _entries.erase(_entries.begin() + static_cast<std::ptrdiff_t>(*place));
    _places.clear();
    if (_entries.size() > kSmall) indexNewEntries();
  }

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

 private:
  // Up to this many entries a walk over them is faster than hashing.
  static constexpr std::size_t kSmall = 8;

  std::optional<std::size_t> placeOf(std::string_view key) const {
    if (_places.empty()) {
      for (std::size_t place = 0; place < _entries.size(); ++place)
        if (_entries[place].first == key) return place;
      return std::nullopt;
    }
    const auto [first, last] = _places.equal_range(std::hash<std::string_view>{}(key));
    for (auto found = first; found != last; ++found)
      if (_entries[found->second].first == key) return found->second;
    return std::nullopt;
  }

  void indexNewEntries() {
    for (std::size_t place = _places.size(); place < _entries.size(); ++place)
      _places.emplace(std::hash<std::string_view>{}(_entries[place].first), place);
  }

  std::vector<Entry> _entries;
  // Hash of a key -> place in _entries; empty while there are few entries.
  std::unordered_multimap<std::size_t, std::size_t> _places;
};

}  // namespace installer
