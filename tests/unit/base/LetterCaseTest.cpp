#include "base/LetterCase.h"

#include <gtest/gtest.h>

namespace installer::letterCase {
namespace {

constexpr const char* kComposed = "caf\xC3\xA9";     // é as one character
constexpr const char* kDecomposed = "cafe\xCC\x81";  // e and a mark

TEST(LetterCaseTest, ALetterAndItsMarkBecomeOneCharacter) {
  EXPECT_EQ(kComposed, composed(kDecomposed));
  EXPECT_EQ(kComposed, composed(kComposed));
  EXPECT_EQ("", composed(""));
}

TEST(LetterCaseTest, BytesThatAreNoUtf8StayBetweenWhatIsComposed) {
  EXPECT_EQ(std::string("\xE9") + kComposed + "\xFF" + kComposed,
            composed(std::string("\xE9") + kDecomposed + "\xFF" + kDecomposed));
}

TEST(LetterCaseTest, NamesAreOneWithoutRegardToCaseAndForm) {
  EXPECT_EQ(withoutCaseAndForm(kComposed), withoutCaseAndForm("CAFE\xCC\x81"));
  EXPECT_EQ(withoutCaseAndForm("STRASSE"), withoutCaseAndForm("stra\xC3\x9F"
                                                              "e"));
  EXPECT_NE(withoutCaseAndForm("cafe"), withoutCaseAndForm(kComposed));
  EXPECT_NE(withoutCaseAndForm("a"), withoutCaseAndForm("b"));
  EXPECT_EQ("\xE9", withoutCaseAndForm("\xE9"));
}

TEST(LetterCaseTest, CompositionKeepsLetterCase) {
  EXPECT_EQ("CAF\xC3\x89", composed("CAFE\xCC\x81"));
}

}  // namespace
}  // namespace installer::letterCase
