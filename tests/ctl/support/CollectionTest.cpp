#include "ctl/support/Collection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace installer::ctl::support {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

Item made(const std::string& bytes) {
  return {"made", "something", std::nullopt, [bytes] { return Redacted{bytes, 3}; }};
}

std::vector<Fate> fates(const std::vector<Collected>& collected) {
  std::vector<Fate> all;
  for (const Collected& one : collected) all.push_back(one.fate);
  return all;
}

TEST(SupportCollectionTest, WhatComesWhenThereIsNoRoomLeftIsLeftOut) {
  proves("SUPPORT-5");
  const auto collected = collect({made("123456"), made("12345"), made("1234"), made("1")}, 10);

  EXPECT_THAT(fates(collected),
              ElementsAre(Fate::taken, Fate::leftOut, Fate::taken, Fate::leftOut));
  EXPECT_EQ("", collected[1].bytes);
  EXPECT_EQ(3u, collected[0].redactions);
  EXPECT_THAT(collected[1].reason, HasSubstr("no room for it: it holds 10 bytes"));
}

TEST(SupportCollectionTest, LimitsAreThoseOfTheManual) {
  EXPECT_EQ(std::size_t{32} << 20, kMostBytes);
  EXPECT_EQ(std::size_t{4} << 20, kEnds.head + kEnds.tail);
}

TEST(SupportCollectionTest, WhatIsMadeOfNothingIsMissing) {
  EXPECT_THAT(fates(collect({made("")}, 10)), ElementsAre(Fate::missing));
}

TEST(SupportCollectionTest, HolesOfATextAreNoLetters) {
  const test::TemporaryFolder folder;
  folder.makeFile("trace", std::string("pass\0word=hidden\n\0\0text\n", 24));
  const Item item{"trace", "a text", WantedFile{folder.path(), "trace", Content::lines}, {}};

  const auto collected = collect({item}, 100);

  EXPECT_EQ("password=[redacted]\ntext\n", collected.at(0).bytes);
  EXPECT_EQ(1u, collected.at(0).redactions);
}

}  // namespace
}  // namespace installer::ctl::support
