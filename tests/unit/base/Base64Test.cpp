#include "base/Base64.h"

#include <gtest/gtest.h>

#include "support/Proves.h"

namespace installer {
namespace {

using namespace std::string_view_literals;

struct Pair {
  std::string_view bytes;
  std::string_view text;
};

constexpr Pair kPairs[] = {
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
    {"\x00\x10\x83"sv, "ABCD"},
    {"\xFB\xFF\xBF", "+/+/"},
    {"\xFF\xFF\xFF", "////"},
    {"\x69\xB7\x1D", "abcd"},
    {"\xD3\x5D\xB7", "0123"},
};

TEST(Base64Test, BytesAreEncodedWithPadding) {
  proves("LIST-4");
  for (const Pair& pair : kPairs) EXPECT_EQ(encodeBase64(pair.bytes), pair.text);
}

TEST(Base64Test, TextsAreDecoded) {
  proves("LIST-4");
  for (const Pair& pair : kPairs) EXPECT_EQ(decodeBase64(pair.text), pair.bytes);
}

TEST(Base64Test, EveryByteSurvivesAtEveryPlace) {
  proves("LIST-4");
  for (std::size_t length = 1; length <= 4; ++length)
    for (int byte = 0; byte < 256; ++byte) {
      const std::string bytes(length, static_cast<char>(byte));

      EXPECT_EQ(decodeBase64(encodeBase64(bytes)), bytes);
    }
}

TEST(Base64Test, WhiteSpaceCountsForNothing) {
  proves("LIST-4");
  EXPECT_EQ(decodeBase64(" Z\tg\r=\n= "), "f");
  EXPECT_EQ(decodeBase64(" \t\r\n"), "");
}

TEST(Base64Test, WrongTextsAreRefused) {
  proves("LIST-4");
  for (const char* text : {"Z", "Zg", "Zg=", "Zm9", "Zm9v=", "Zm9v==", "Zm9v====", "=",
                           "====", "Z===", "Zg===", "Zg==Zg==", "Zg=g", "Zm8=Zg==", "Zm8==", "Zg-_",
                           "Zm9*", "Zm9v\xC3\xA9=="})
    EXPECT_EQ(decodeBase64(text), std::nullopt) << text;
}

}  // namespace
}  // namespace installer
