#include "base/TextDictionary.h"

#include <algorithm>
#include <array>
#include <utility>

#include "hotfix/base/KeyedHash.h"

namespace installer {

namespace {

constexpr std::size_t kSmallestBlock = 1024;  // bytes
constexpr std::size_t kLargestBlock = std::size_t{1} << 20;
constexpr std::size_t kAtOnce = 32;  // entries whose places are looked up together

}  // namespace

TextDictionary::TextDictionary(const TextDictionary& other)
    : _textSize(other._textSize), _entries(other._entries), _places(other._places) {
  gather();
}

TextDictionary& TextDictionary::operator=(TextDictionary other) noexcept {
  std::swap(_blocks, other._blocks);
  std::swap(_kept, other._kept);
  std::swap(_textSize, other._textSize);
  std::swap(_entries, other._entries);
  std::swap(_places, other._places);
  return *this;
}

std::optional<std::string_view> TextDictionary::find(std::string_view key) const {
  const std::optional<std::size_t> place = placeOf(key, KeyedHash{}(key));
  if (!place) return std::nullopt;
  return _entries[*place].value;
}

void TextDictionary::set(std::string_view key, std::string_view value) {
  const std::size_t hash = KeyedHash{}(key);
  if (const std::optional<std::size_t> place = placeOf(key, hash))
    replaceValue(*place, viewOf(keepCopy(value)));
  else
    add({viewOf(keepCopy(key)), viewOf(keepCopy(value))}, hash);
  gatherIfSparse();
}

void TextDictionary::remove(std::string_view key) {
  const std::optional<std::size_t> place = placeOf(key, KeyedHash{}(key));
  if (!place) return;
  const auto entry = _entries.begin() + static_cast<std::ptrdiff_t>(*place);
  _textSize -= entry->key.size() + entry->value.size();
  _entries.erase(entry);
  _places.remove(*place);
  gatherIfSparse();
}

// Memory is what this takes the time for: each place is on its way while the others are worked out.
void TextDictionary::setKept(std::span<const Entry> entries) {
  std::array<std::size_t, kAtOnce> hashes{};
  while (!entries.empty()) {
    const std::span<const Entry> some = entries.first(std::min(kAtOnce, entries.size()));
    for (std::size_t at = 0; at < some.size(); ++at) {
      hashes[at] = KeyedHash{}(some[at].key);
      _places.announce(hashes[at]);
    }
    for (std::size_t at = 0; at < some.size(); ++at) {
      if (const std::optional<std::size_t> place = placeOf(some[at].key, hashes[at]))
        replaceValue(*place, some[at].value);
      else
        add(some[at], hashes[at]);
    }
    entries = entries.subspan(some.size());
  }
}

std::span<char> TextDictionary::keep(std::string bytes) {
  _blocks.push_front(std::move(bytes));
  _kept += _blocks.front().size();
  return _blocks.front();
}

std::span<char> TextDictionary::keepCopy(std::string_view text) {
  if (_blocks.empty() || _blocks.front().capacity() - _blocks.front().size() < text.size()) {
    _blocks.emplace_front();
    _blocks.front().reserve(
        std::max(text.size(), std::clamp(_kept, kSmallestBlock, kLargestBlock)));
  }
  std::string& block = _blocks.front();
  block += text;
  _kept += text.size();
  return std::span(block).last(text.size());
}

std::optional<std::size_t> TextDictionary::placeOf(std::string_view key, std::size_t hash) const {
  return _places.find(hash, [&](std::size_t place) { return _entries[place].key == key; });
}

void TextDictionary::replaceValue(std::size_t place, std::string_view by) {
  std::string_view& value = _entries[place].value;
  _textSize = _textSize - value.size() + by.size();
  value = by;
}

void TextDictionary::add(const Entry& entry, std::size_t hash) {
  _places.makeRoomFor(_entries.size() + 1);
  _entries.push_back(entry);
  _places.add(hash, _entries.size() - 1);
  _textSize += entry.key.size() + entry.value.size();
}

// Brings the texts together in one block of our own. Once there is memory for that, nothing fails.
void TextDictionary::gather() {
  std::forward_list<std::string> blocks(1);
  blocks.front().reserve(_textSize);
  _blocks.swap(blocks);
  _kept = 0;
  for (Entry& entry : _entries)
    entry = {viewOf(keepCopy(entry.key)), viewOf(keepCopy(entry.value))};
}

// What has no more use must not come to be more than what has.
void TextDictionary::gatherIfSparse() {
  if (_kept > kSmallestBlock && _kept / 2 > _textSize) gather();
}

}  // namespace installer
