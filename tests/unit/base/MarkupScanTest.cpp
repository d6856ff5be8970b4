#include "base/MarkupScan.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "support/Proves.h"

namespace installer::xml {
namespace {

// A start tag of this many bytes outside quotation marks.
std::string tagOf(std::size_t size) {
  return "<" + std::string(size - 2, 'a') + ">";
}

const std::string kLong = tagOf(kMaximumMarkup + 1);

TEST(MarkupScanTest, TagsHaveALongestLength) {
  proves("LIST-10", "DOCUMENT-14");
  EXPECT_TRUE(hasShortMarkup("<m>" + tagOf(kMaximumMarkup) + "</m>"));

  EXPECT_FALSE(hasShortMarkup("<m>" + kLong + "</m>"));
}

TEST(MarkupScanTest, EveryTagIsLookedAt) {
  EXPECT_FALSE(hasShortMarkup(kLong));
  EXPECT_FALSE(hasShortMarkup("text " + kLong));
  EXPECT_FALSE(hasShortMarkup("<a/><b>x</b>" + kLong));
  EXPECT_FALSE(hasShortMarkup("<!-- c -->" + kLong));
  EXPECT_FALSE(hasShortMarkup("<![CDATA[ x ]]>" + kLong));
  EXPECT_FALSE(hasShortMarkup("<?p i?>" + kLong));
  EXPECT_FALSE(hasShortMarkup("<!DOCTYPE m [" + kLong + "]><m/>"));
  EXPECT_FALSE(hasShortMarkup("<!DOCTYPE m [<!ENTITY e 'x'>]>" + kLong));
}

TEST(MarkupScanTest, ManyShortTagsAreShort) {
  std::string text;
  for (int number = 0; number < 20'000; ++number) text += "<a/>";

  EXPECT_TRUE(hasShortMarkup(text));
}

TEST(MarkupScanTest, TextMayBeLong) {
  const std::string text(2 * kMaximumMarkup, 'x');

  EXPECT_TRUE(hasShortMarkup(text + "<m>" + text + "</m>" + text));
}

TEST(MarkupScanTest, CommentsSectionsAndInstructionsHoldNoMarkup) {
  EXPECT_TRUE(hasShortMarkup("<!-- " + kLong + " ' -- -->" + tagOf(kMaximumMarkup)));
  EXPECT_TRUE(hasShortMarkup("<![CDATA[ " + kLong + " ' ]] ]]>" + tagOf(kMaximumMarkup)));
  EXPECT_TRUE(hasShortMarkup("<?p " + kLong + " ' ? ?>" + tagOf(kMaximumMarkup)));
  EXPECT_TRUE(hasShortMarkup("<!DOCTYPE m [<!-- ' ]> " + kLong + " -->]><m/>"));
}

TEST(MarkupScanTest, WhatLooksLikeACommentOrSectionIsMarkup) {
  EXPECT_FALSE(hasShortMarkup("<!-" + kLong));
  EXPECT_FALSE(hasShortMarkup("<![CDATA" + kLong));
}

TEST(MarkupScanTest, OpenCommentReachesToTheEnd) {
  EXPECT_TRUE(hasShortMarkup("<!-- " + kLong));
  EXPECT_TRUE(hasShortMarkup("<!-->" + kLong));
}

TEST(MarkupScanTest, ValuesDoNotCount) {
  const std::string value(2 * kMaximumMarkup, 'v');
  for (const char* const mark : {"'", "\""}) {
    EXPECT_TRUE(
        hasShortMarkup("<m a=" + (mark + value) + mark + " b=" + mark + value + mark + "/>"));
    EXPECT_TRUE(hasShortMarkup("<!DOCTYPE m [<!ENTITY e " + (mark + value) + mark + ">]><m/>"));
  }
}

TEST(MarkupScanTest, MarkupGoesOnBehindValues) {
  const std::string half(kMaximumMarkup / 2, 'a');

  EXPECT_FALSE(hasShortMarkup("<" + half + " a='>' b=\">'[<\"" + half + ">"));
  EXPECT_FALSE(hasShortMarkup("<" + half + " a='\"'" + half + ">"));
}

TEST(MarkupScanTest, DeclarationsHaveALongestLengthEach) {
  const std::string choices(kMaximumMarkup / 2, 'a');

  EXPECT_TRUE(hasShortMarkup("<!DOCTYPE m [<!ATTLIST m a (" + choices + ")><!ATTLIST m b (" +
                             choices + ")>]><m/>"));
  EXPECT_FALSE(hasShortMarkup("<!DOCTYPE m [<!ATTLIST m a (" + choices + choices + ")>]><m/>"));
}

TEST(MarkupScanTest, OpenMarkupCountsToTheEnd) {
  EXPECT_TRUE(hasShortMarkup("<" + std::string(kMaximumMarkup - 1, 'a')));
  EXPECT_FALSE(hasShortMarkup("<" + std::string(kMaximumMarkup, 'a')));
  EXPECT_TRUE(hasShortMarkup("<a b='" + std::string(kMaximumMarkup, 'a')));
}

TEST(MarkupScanTest, NothingHasNoMarkup) {
  EXPECT_TRUE(hasShortMarkup(""));
  EXPECT_TRUE(hasShortMarkup("<"));
}

}  // namespace
}  // namespace installer::xml
