#include "hotfix/Version.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "support/Proves.h"

namespace installer::test {
namespace {

TEST(VersionTest, TextAndNumbersAgree) {
  proves("LIBRARY-9");
  EXPECT_EQ(kVersion, fmt::format("{}.{}.{}", kVersionMajor, kVersionMinor, kVersionPatch));
}

}  // namespace
}  // namespace installer::test
