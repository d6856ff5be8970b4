#pragma once

#include <cstddef>
#include <forward_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "hotfix/base/PlaceIndex.h"

namespace installer {

inline std::string_view viewOf(std::span<char> text) {
  return {text.data(), text.size()};
}

// An OrderedDictionary of texts for files with very many entries: the texts lie in a few large
// blocks, of which a file's own bytes can be one, so that an entry takes no memory of its own.
class TextDictionary {
 public:
  struct Entry {
    std::string_view key;
    std::string_view value;
    friend bool operator==(const Entry&, const Entry&) = default;
  };
  // In the order in which the keys were first stored; valid until the next change.
  using const_iterator = std::vector<Entry>::const_iterator;

  TextDictionary() = default;
  TextDictionary(const TextDictionary& other);
  TextDictionary& operator=(TextDictionary other) noexcept;
  ~TextDictionary() = default;

  std::size_t size() const { return _entries.size(); }
  const_iterator begin() const { return _entries.begin(); }
  const_iterator end() const { return _entries.end(); }
  // Bytes of all keys and values.
  std::size_t textSize() const { return _textSize; }

  // Bytes of all texts that are kept; after set() and remove() at most twice those of the entries,
  // but for a few.
  std::size_t keptSize() const { return _kept; }

  // The value stored under `key`, valid until the next change; nullopt when there is none.
  [[nodiscard]] std::optional<std::string_view> find(std::string_view key) const;
  // Stores the value under `key`, in place of what was there.
  void set(std::string_view key, std::string_view value);
  // Nothing happens when there is none.
  void remove(std::string_view key);

  // Keep the bytes, or a copy, as long as the dictionary uses them; what is answered may be changed
  // before it is a text of an entry.
  std::span<char> keep(std::string bytes);
  std::span<char> keepCopy(std::string_view text);
  // Stores each of the entries in turn, the texts of which lie in what was kept.
  void setKept(std::span<const Entry> entries);

 private:
  [[nodiscard]] std::optional<std::size_t> placeOf(std::string_view key, std::size_t hash) const;
  void replaceValue(std::size_t place, std::string_view by);
  void add(const Entry& entry, std::size_t hash);
  void gather();
  void gatherIfSparse();

  std::forward_list<std::string> _blocks;  // none is lengthened beyond its capacity
  std::size_t _kept = 0;                   // bytes in the blocks
  std::size_t _textSize = 0;
  std::vector<Entry> _entries;
  PlaceIndex _places;
};

}  // namespace installer
