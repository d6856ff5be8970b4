#include "base/TextDictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "hotfix/base/OrderedDictionary.h"
#include "support/Proves.h"
#include "support/RandomText.h"

namespace installer {
namespace {

using Entry = TextDictionary::Entry;
using ::testing::ElementsAre;
using ::testing::Optional;

std::vector<Entry> entriesOf(const TextDictionary& dictionary) {
  return {dictionary.begin(), dictionary.end()};
}

void expectEntries(const TextDictionary& dictionary, const OrderedDictionary<std::string>& others) {
  ASSERT_EQ(dictionary.size(), others.size());
  std::size_t bytes = 0;
  auto other = others.begin();
  for (const auto& [key, value] : dictionary) {
    ASSERT_EQ(key, other->first);
    ASSERT_EQ(value, other->second);
    ASSERT_EQ(dictionary.find(key), value);
    bytes += key.size() + value.size();
    ++other;
  }
  ASSERT_EQ(dictionary.textSize(), bytes);
}

TEST(TextDictionaryTest, NewDictionaryIsEmpty) {
  const TextDictionary dictionary;

  EXPECT_EQ(dictionary.size(), 0U);
  EXPECT_EQ(dictionary.find(""), std::nullopt);
}

TEST(TextDictionaryTest, KeepsTheOrderOfFirstStores) {
  proves("LIST-20");
  TextDictionary dictionary;
  dictionary.set("z", "1");
  dictionary.set("a", "2");
  dictionary.set("z", "3");

  EXPECT_THAT(entriesOf(dictionary), ElementsAre(Entry{"z", "3"}, Entry{"a", "2"}));
}

TEST(TextDictionaryTest, KeyStoredAgainAfterRemovalComesLast) {
  proves("LIST-20");
  TextDictionary dictionary;
  dictionary.set("a", "1");
  dictionary.set("b", "2");

  dictionary.remove("a");
  dictionary.remove("unknown");
  dictionary.set("a", "3");

  EXPECT_THAT(entriesOf(dictionary), ElementsAre(Entry{"b", "2"}, Entry{"a", "3"}));
}

TEST(TextDictionaryTest, KeptEntriesAreStoredInTheirOrder) {
  proves("LIST-20");
  TextDictionary dictionary;
  const std::span<char> texts = dictionary.keep("abab");
  const std::string_view view(texts.data(), texts.size());

  dictionary.setKept(std::vector<Entry>{{view.substr(0, 1), view.substr(1, 1)},
                                        {view.substr(1, 1), view.substr(0, 1)},
                                        {view.substr(2, 1), view.substr(0, 0)}});
  texts[3] = 'x';

  EXPECT_THAT(entriesOf(dictionary), ElementsAre(Entry{"a", ""}, Entry{"b", "a"}));
}

// Short ones among it, which lie in their strings themselves.
TEST(TextDictionaryTest, KeptBytesStayWhereTheyAre) {
  TextDictionary dictionary;
  std::vector<std::span<char>> kept;
  for (int number = 0; number < 100; ++number) {
    kept.push_back(dictionary.keep(std::to_string(number)));
    kept.push_back(dictionary.keepCopy(std::to_string(number)));
  }

  for (std::size_t at = 0; at < kept.size(); ++at)
    EXPECT_EQ(std::string(kept[at].begin(), kept[at].end()), std::to_string(at / 2));
}

TEST(TextDictionaryTest, ValueOfTheDictionaryItselfCanBeStored) {
  TextDictionary dictionary;
  dictionary.set("a", std::string(700, 'x'));

  for (int number = 0; number < 20; ++number)
    dictionary.set(std::to_string(number), *dictionary.find("a"));

  EXPECT_THAT(dictionary.find("19"), Optional(std::string_view(std::string(700, 'x'))));
}

TEST(TextDictionaryTest, CopyHasTextsOfItsOwn) {
  TextDictionary dictionary;
  dictionary.set("a", "1");

  TextDictionary copy(dictionary);
  TextDictionary assigned;
  assigned.set("b", "2");
  assigned = copy;
  dictionary = TextDictionary();
  copy.set("a", "2");

  EXPECT_THAT(entriesOf(copy), ElementsAre(Entry{"a", "2"}));
  EXPECT_THAT(entriesOf(assigned), ElementsAre(Entry{"a", "1"}));
  EXPECT_EQ(assigned.find("b"), std::nullopt);
  EXPECT_EQ(assigned.textSize(), 2U);
}

// What was replaced or removed is let go in time.
TEST(TextDictionaryTest, MemoryIsThatOfTheEntries) {
  TextDictionary dictionary;
  for (int round = 0; round < 100; ++round) {
    dictionary.set("replaced", std::string(10'000, 'x'));
    dictionary.set(std::to_string(round), std::string(10'000, 'y'));
    dictionary.remove(std::to_string(round));

    EXPECT_LE(dictionary.keptSize(), 2 * dictionary.textSize() + 20'000);
  }
}

TEST(TextDictionaryTest, RandomChangesAgreeWithAnOrderedDictionary) {
  proves("LIST-20");
  test::RandomSource random(7);
  for (int run = 0; run < 200; ++run) {
    TextDictionary dictionary;
    OrderedDictionary<std::string> other;
    for (int step = 0; step < 100; ++step) {
      const std::string key = std::to_string(random.below(40));
      const std::string value(random.below(200), static_cast<char>('a' + step % 26));
      if (random.below(4) == 0) {
        dictionary.remove(key);
        other.remove(key);
      } else {
        dictionary.set(key, value);
        other.set(key, value);
      }
    }
    expectEntries(dictionary, other);
    expectEntries(TextDictionary(dictionary), other);
  }
}

}  // namespace
}  // namespace installer
