#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace installer {

/// Finds the places of a list's entries by the hashes of their keys: an open hash table beside the
/// list. It keeps a part of each hash, so that growing asks for no key and a search for hardly any
/// but the right one. How long a search takes is up to the hash. For up to four billion entries.
class PlaceIndex {
 public:
  /// The place that was added with this hash and for which isWanted(place) is true; nullopt when
  /// there is none.
  template <class IsWanted>
  std::optional<std::size_t> find(std::size_t hash, IsWanted isWanted) const {
    if (_slots.empty()) return std::nullopt;
    const auto part = static_cast<std::uint32_t>(hash);
    for (std::size_t slot = firstSlot(part); _slots[slot].place != kFree; slot = nextSlot(slot))
      if (_slots[slot].hash == part && isWanted(std::size_t{_slots[slot].place}))
        return _slots[slot].place;
    return std::nullopt;
  }

  /// Says that the hash will be asked for soon.
  void announce(std::size_t hash) const {
    if (!_slots.empty()) __builtin_prefetch(&_slots[firstSlot(static_cast<std::uint32_t>(hash))]);
  }

  /// Has room for so many places.
  void reserve(std::size_t count) {
    if (!hasRoomFor(count)) rebuild(std::bit_ceil(count + count / 2 + 1));
  }

  /// Has room for so many places, one more than there are; grows to twice as many.
  void makeRoomFor(std::size_t count) {
    if (!hasRoomFor(count)) rebuild(_slots.empty() ? kFirstSlots : _slots.size() * 2);
  }

  /// Adds the place behind all others: 0, then 1, and so on. Throws nothing where there is room.
  void add(std::size_t hash, std::size_t place) {
    makeRoomFor(place + 1);
    fillSlot({static_cast<std::uint32_t>(hash), static_cast<std::uint32_t>(place)});
  }

  /// Removes the place; those behind it move up by one.
  void remove(std::size_t place) {
    for (Slot& slot : _slots) {
      if (slot.place == kFree || slot.place < place) continue;
      slot.place = slot.place == place ? kFree : slot.place - 1;
    }
    rebuild(_slots.size());
  }

  /// Removes every place.
  void clear() { _slots.clear(); }

 private:
  static constexpr std::uint32_t kFree = std::numeric_limits<std::uint32_t>::max();
  static constexpr std::size_t kFirstSlots = 4;

  struct Slot {
    std::uint32_t hash = 0;  ///< the lower half
    std::uint32_t place = kFree;
  };

  /// At least a third of the slots stay free, so that a search ends soon.
  bool hasRoomFor(std::size_t count) const { return count * 3 <= _slots.size() * 2; }

  void rebuild(std::size_t count) {
    const std::vector<Slot> old = std::exchange(_slots, std::vector<Slot>(count));
    for (const Slot& slot : old)
      if (slot.place != kFree) fillSlot(slot);
  }

  void fillSlot(const Slot& filled) {
    std::size_t slot = firstSlot(filled.hash);
    while (_slots[slot].place != kFree) slot = nextSlot(slot);
    _slots[slot] = filled;
  }

  std::size_t firstSlot(std::uint32_t hash) const { return hash & (_slots.size() - 1); }
  std::size_t nextSlot(std::size_t slot) const { return (slot + 1) & (_slots.size() - 1); }

  std::vector<Slot> _slots;  ///< a power of two long; empty before the first place
};

}  // namespace installer
