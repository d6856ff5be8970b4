#include "hotfix/base/PlaceIndex.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "support/Proves.h"
#include "support/RandomText.h"

namespace installer {
namespace {

using Place = std::optional<std::size_t>;

// The places that were added under each hash, searched one by one.
class ListedPlaces {
 public:
  void add(std::size_t hash) { _hashes.push_back(hash); }
  void remove(std::size_t place) {
    _hashes.erase(_hashes.begin() + static_cast<std::ptrdiff_t>(place));
  }
  std::size_t size() const { return _hashes.size(); }
  std::size_t hashOf(std::size_t place) const { return _hashes[place]; }

 private:
  std::vector<std::size_t> _hashes;
};

Place find(const PlaceIndex& index, std::size_t hash, std::size_t wanted) {
  return index.find(hash, [&](std::size_t place) { return place == wanted; });
}

void expectSame(const PlaceIndex& index, const ListedPlaces& list) {
  for (std::size_t place = 0; place < list.size(); ++place)
    ASSERT_EQ(find(index, list.hashOf(place), place), Place(place));
}

TEST(PlaceIndexTest, NothingIsFoundInAnEmptyOne) {
  PlaceIndex index;
  index.announce(7);

  EXPECT_EQ(find(index, 7, 0), std::nullopt);
}

TEST(PlaceIndexTest, PlacesOfOneHashAreToldApart) {
  proves("LIST-20");
  PlaceIndex index;
  for (std::size_t place = 0; place < 50; ++place) index.add(7, place);

  for (std::size_t place = 0; place < 50; ++place) EXPECT_EQ(find(index, 7, place), Place(place));
  EXPECT_EQ(find(index, 7, 50), std::nullopt);
}

// Both stand in the same chain of slots.
TEST(PlaceIndexTest, NobodyIsAskedForAPlaceOfAnotherHash) {
  PlaceIndex index;
  index.add(0, 0);
  index.add(std::size_t{1} << 20, 1);
  std::size_t asked = 0;

  EXPECT_EQ(index.find(std::size_t{1} << 20,
                       [&](std::size_t place) {
                         ++asked;
                         return place == 1;
                       }),
            Place(1));
  EXPECT_EQ(asked, 1U);
}

TEST(PlaceIndexTest, PlacesBehindARemovedOneMoveUp) {
  proves("LIST-20");
  PlaceIndex index;
  for (std::size_t place = 0; place < 3; ++place) index.add(place + 10, place);

  index.remove(1);

  EXPECT_EQ(find(index, 10, 0), Place(0));
  EXPECT_EQ(find(index, 11, 1), std::nullopt);
  EXPECT_EQ(find(index, 12, 1), Place(1));
}

TEST(PlaceIndexTest, RoomChangesNothing) {
  PlaceIndex index;
  for (std::size_t count = 0; count < 40; ++count) {
    index.reserve(count);
    index.add(count * 3, count);
    index.reserve(count / 2);

    for (std::size_t place = 0; place <= count; ++place)
      ASSERT_EQ(find(index, place * 3, place), Place(place));
    ASSERT_EQ(find(index, 1, 0), std::nullopt);
  }
}

TEST(PlaceIndexTest, ClearedOneStartsAnew) {
  PlaceIndex index;
  index.add(10, 0);

  index.clear();
  EXPECT_EQ(find(index, 10, 0), std::nullopt);

  index.add(11, 0);
  EXPECT_EQ(find(index, 11, 0), Place(0));
}

TEST(PlaceIndexTest, RandomChangesAgreeWithAList) {
  proves("LIST-20");
  test::RandomSource random(11);
  for (int run = 0; run < 200; ++run) {
    PlaceIndex index;
    ListedPlaces list;
    for (int step = 0; step < 60; ++step) {
      if (list.size() > 0 && random.below(4) == 0) {
        const std::size_t place = random.below(list.size());
        index.remove(place);
        list.remove(place);
      } else {
        const std::size_t hash = random.below(40) << (random.below(2) * 32);
        index.add(hash, list.size());
        list.add(hash);
      }
    }
    expectSame(index, list);
  }
}

}  // namespace
}  // namespace installer
