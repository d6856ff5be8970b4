#include "hotfix/base/KeyedHash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "base/SipHash.h"

namespace installer::test {
namespace {

// The vectors that its authors publish: the key's bytes count from 0 to 15, the text's from 0 on.
struct Vector {
  std::size_t length;
  std::uint64_t hash;
};

class SipHashTest : public ::testing::TestWithParam<Vector> {};

TEST_P(SipHashTest, GivesThePublishedHash) {
  std::string text;
  for (std::size_t at = 0; at < GetParam().length; ++at) text += static_cast<char>(at);

  EXPECT_EQ(sipHash(text, {0x0706050403020100U, 0x0f0e0d0c0b0a0908U}, 2, 4), GetParam().hash);
}

INSTANTIATE_TEST_SUITE_P(Published, SipHashTest,
                         ::testing::Values(Vector{0, 0x726fdb47dd0e0e31U},
                                           Vector{1, 0x74f839c593dc67fdU},
                                           Vector{8, 0x93f5f5799a932462U},
                                           Vector{15, 0xa129ca6149be45e5U}),
                         [](const auto& vector) { return std::to_string(vector.param.length); });

TEST(SipHashTest, EachPartOfTheKeyAndEachRoundCounts) {
  const std::set<std::uint64_t> hashes = {
      sipHash("key", {1, 2}, 1, 3), sipHash("key", {2, 1}, 1, 3), sipHash("key", {1, 3}, 1, 3),
      sipHash("key", {1, 2}, 2, 3), sipHash("key", {1, 2}, 1, 4), sipHash("kez", {1, 2}, 1, 3)};

  EXPECT_EQ(hashes.size(), 6U);
}

TEST(KeyedHashTest, OneProcessGivesATextOneHash) {
  EXPECT_EQ(KeyedHash{}("key"), KeyedHash{}(std::string("key")));
  EXPECT_NE(KeyedHash{}("key"), KeyedHash{}("kez"));
}

TEST(KeyedHashTest, TheKeyIsDrawn) {
  EXPECT_NE(KeyedHash{}("key"), sipHash("key", {}, 1, 3));
}

}  // namespace
}  // namespace installer::test
