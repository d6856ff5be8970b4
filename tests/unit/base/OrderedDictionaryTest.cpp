#include "hotfix/base/OrderedDictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "support/Proves.h"
#include "support/RandomText.h"

namespace installer {
namespace {

using Dictionary = OrderedDictionary<int>;
using ::testing::ElementsAre;
using ::testing::IsNull;
using ::testing::Pointee;

std::vector<std::string> keysOf(const Dictionary& dictionary) {
  std::vector<std::string> keys;
  for (const auto& entry : dictionary) keys.push_back(entry.first);
  return keys;
}

// As many as need the index.
Dictionary manyEntries(int count) {
  Dictionary dictionary;
  for (int number = 0; number < count; ++number) dictionary.set(std::to_string(number), number);
  return dictionary;
}

TEST(OrderedDictionaryTest, NewDictionaryIsEmpty) {
  const Dictionary dictionary;

  EXPECT_TRUE(dictionary.empty());
  EXPECT_EQ(dictionary.size(), 0u);
  EXPECT_THAT(dictionary.find(""), IsNull());
}

TEST(OrderedDictionaryTest, KeepsTheOrderOfFirstStores) {
  proves("LIST-20");
  const Dictionary dictionary = {{"z", 1}, {"a", 2}, {"z", 3}, {"", 4}};

  EXPECT_THAT(keysOf(dictionary), ElementsAre("z", "a", ""));
  EXPECT_THAT(dictionary.find("z"), Pointee(3));
  EXPECT_THAT(dictionary.find(""), Pointee(4));
  EXPECT_EQ(dictionary.size(), 3u);
  EXPECT_FALSE(dictionary.empty());
}

TEST(OrderedDictionaryTest, KeyStoredAgainAfterRemovalComesLast) {
  proves("LIST-20");
  Dictionary dictionary = {{"a", 1}, {"b", 2}};

  dictionary.remove("a");
  dictionary.set("a", 3);

  EXPECT_THAT(keysOf(dictionary), ElementsAre("b", "a"));
  EXPECT_THAT(dictionary.find("a"), Pointee(3));
}

TEST(OrderedDictionaryTest, RemovingAnUnknownKeyChangesNothing) {
  proves("LIST-20");
  Dictionary dictionary = {{"a", 1}};

  dictionary.remove("b");

  EXPECT_THAT(keysOf(dictionary), ElementsAre("a"));
}

TEST(OrderedDictionaryTest, ClearedDictionaryStartsAnew) {
  Dictionary dictionary = manyEntries(20);

  dictionary.clear();
  dictionary.set("5", 50);

  EXPECT_THAT(keysOf(dictionary), ElementsAre("5"));
  EXPECT_THAT(dictionary.find("5"), Pointee(50));
  EXPECT_THAT(dictionary.find("6"), IsNull());
}

TEST(OrderedDictionaryTest, RoomIsNoEntry) {
  Dictionary dictionary = {{"a", 1}};

  dictionary.reserve(1000);

  EXPECT_THAT(keysOf(dictionary), ElementsAre("a"));
  EXPECT_THAT(dictionary.find("a"), Pointee(1));
  EXPECT_THAT(dictionary.find("b"), IsNull());
}

TEST(OrderedDictionaryTest, EveryKeyOfManyIsFoundWhateverTheirNumber) {
  proves("LIST-20");
  for (int count = 0; count <= 300; ++count) {
    const Dictionary dictionary = manyEntries(count);

    ASSERT_EQ(dictionary.size(), static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number)
      ASSERT_THAT(dictionary.find(std::to_string(number)), Pointee(number)) << count;
    ASSERT_THAT(dictionary.find("absent"), IsNull()) << count;
  }
}

// Counts how often it is asked.
struct CountingHash {
  static inline std::size_t count = 0;
  std::size_t operator()(std::string_view text) const {
    ++count;
    return KeyedHash{}(text);
  }
};

TEST(OrderedDictionaryTest, EachSearchHashesItsKeyOnce) {
  proves("LIST-7");
  constexpr std::size_t kKeys = 40'000;
  OrderedDictionary<int, CountingHash> dictionary;

  CountingHash::count = 0;
  for (std::size_t key = 0; key < kKeys; ++key) dictionary.set(std::to_string(key), 1);
  EXPECT_EQ(CountingHash::count, kKeys);

  CountingHash::count = 0;
  for (std::size_t key = 0; key < kKeys; ++key)
    ASSERT_THAT(dictionary.find(std::to_string(key)), Pointee(1));
  EXPECT_EQ(CountingHash::count, kKeys);

  CountingHash::count = 0;
  dictionary.remove("0");
  EXPECT_EQ(CountingHash::count, 1U);
}

// Every key in one slot.
struct SameHash {
  std::size_t operator()(std::string_view) const { return 7; }
};

TEST(OrderedDictionaryTest, KeysThatMeetInOneSlotAreToldApart) {
  OrderedDictionary<int, SameHash> dictionary;
  for (int key = 0; key < 100; ++key) dictionary.set(std::to_string(key), key);
  dictionary.remove("50");

  for (int key = 0; key < 100; ++key) {
    if (key == 50)
      EXPECT_EQ(dictionary.find("50"), nullptr);
    else
      EXPECT_THAT(dictionary.find(std::to_string(key)), Pointee(key));
  }
}

TEST(OrderedDictionaryTest, EqualityLooksAtKeysAndValuesOnly) {
  proves("LIST-20");
  const Dictionary dictionary = {{"a", 1}, {"b", 2}};

  EXPECT_EQ(dictionary, (Dictionary{{"b", 2}, {"a", 1}}));
  EXPECT_NE(dictionary, (Dictionary{{"a", 1}, {"b", 3}}));
  EXPECT_NE(dictionary, (Dictionary{{"a", 1}, {"c", 2}}));
  EXPECT_NE(dictionary, (Dictionary{{"a", 1}}));
  EXPECT_NE(dictionary, (Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
}

// A list of pairs that is searched from its beginning.
class ListOfPairs {
 public:
  void set(const std::string& key, int value) {
    for (auto& entry : _entries)
      if (entry.first == key) {
        entry.second = value;
        return;
      }
    _entries.emplace_back(key, value);
  }
  void remove(const std::string& key) {
    std::erase_if(_entries, [&](const auto& entry) { return entry.first == key; });
  }
  const std::vector<std::pair<std::string, int>>& entries() const { return _entries; }

 private:
  std::vector<std::pair<std::string, int>> _entries;
};

TEST(OrderedDictionaryTest, RandomChangesAgreeWithAListOfPairs) {
  proves("LIST-20");
  test::RandomSource random(7);
  for (int run = 0; run < 200; ++run) {
    Dictionary dictionary;
    ListOfPairs list;
    for (int step = 0; step < 100; ++step) {
      const std::string key = std::to_string(random.below(40));
      if (random.below(4) == 0) {
        dictionary.remove(key);
        list.remove(key);
      } else {
        dictionary.set(key, step);
        list.set(key, step);
      }
      const auto* found = dictionary.find(key);
      const auto& entries = list.entries();
      const auto expected = std::find_if(entries.begin(), entries.end(),
                                         [&](const auto& entry) { return entry.first == key; });
      ASSERT_EQ(found != nullptr, expected != entries.end());
    }
    ASSERT_EQ(std::vector(dictionary.begin(), dictionary.end()), list.entries());
  }
}

}  // namespace
}  // namespace installer
