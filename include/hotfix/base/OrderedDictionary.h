#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace installer {

/// A dictionary with text keys that remembers the order in which keys were first stored. Settings
/// files are rewritten whole, so a stable order keeps a rewrite readable beside the old file.
/// Replacing a value keeps the key's place; removing a key and storing it again puts it last.
/// Equality looks at keys and values, not at the order.
///
/// Keys come from other people's files. They are found by comparing, never by hashing, so that no
/// choice of keys makes a search slow: it compares about as many keys as their number has bits.
/// `Comparison` is how two keys are compared.
template <class Value, class Comparison = std::less<>>
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

  /// The value stored under `key`, owned by the dictionary and valid until its next change;
  /// nullptr when there is none.
  const Value* find(std::nullptr_t key) const = delete;
  const Value* find(std::string_view key) const {
    const auto found = _places.find(key);
    return found == _places.end() ? nullptr : &_entries[found->second].second;
  }

  void set(std::nullptr_t key, Value value) = delete;
  void set(std::string key, Value value) {
    const auto [found, isNew] = _places.try_emplace(key, _entries.size());
    if (isNew)
      _entries.emplace_back(std::move(key), std::move(value));
    else
      _entries[found->second].second = std::move(value);
  }

  void remove(std::nullptr_t key) = delete;
  void remove(std::string_view key) {
    const auto found = _places.find(key);
    if (found == _places.end()) return;
    const std::size_t place = found->second;
    _entries.erase(_entries.begin() + static_cast<std::ptrdiff_t>(place));
    _places.erase(found);
    for (auto& [other, otherPlace] : _places)
      if (otherPlace > place) --otherPlace;
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
  std::vector<Entry> _entries;
  std::map<std::string, std::size_t, Comparison> _places;  // of each key in _entries
};

}  // namespace installer
