#include "hotfix/workflow/HotfixPolicy.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using PropertyList::Dictionary;

class HotfixPolicyTest : public ::testing::Test {
 protected:
  bool skipsWith(const Dictionary& properties) {
    _sandbox.writePlist("HF.pkg/Contents/Resources/hotfix.plist", properties);
    return HotfixPolicy(_sandbox.path("HF.pkg")).isSkipRunningCheck();
  }

  Sandbox _sandbox;
};

TEST_F(HotfixPolicyTest, OnlyTheTextTrueSkipsTheRunningCheck) {
  proves("CHECK-9");
  EXPECT_TRUE(skipsWith({{"SKIPRUNNINGCHECK", "true"}}));
  for (const char* text : {"TRUE", "True", "yes", "1", "true ", " true", "false", ""})
    EXPECT_FALSE(skipsWith({{"SKIPRUNNINGCHECK", text}})) << text;
}

TEST_F(HotfixPolicyTest, OtherTypesAndMissingKeysDoNotSkip) {
  EXPECT_FALSE(skipsWith({{"SKIPRUNNINGCHECK", true}}));
  EXPECT_FALSE(skipsWith({{"skiprunningcheck", "true"}}));
  EXPECT_FALSE(skipsWith({}));
}

TEST_F(HotfixPolicyTest, MissingPackageOrPlistDoesNotSkip) {
  proves("CHECK-9");
  _sandbox.makeFolder("empty");

  EXPECT_FALSE(HotfixPolicy(std::nullopt).isSkipRunningCheck());
  EXPECT_FALSE(HotfixPolicy(_sandbox.path("missing")).isSkipRunningCheck());
  EXPECT_FALSE(HotfixPolicy(_sandbox.path("empty")).isSkipRunningCheck());
}

TEST_F(HotfixPolicyTest, EmptyPathIsNoPackageEvenInsideOne) {
  EXPECT_TRUE(skipsWith({{"SKIPRUNNINGCHECK", "true"}}));
  const auto folder = std::filesystem::current_path();
  std::filesystem::current_path(_sandbox.path("HF.pkg"));

  const bool skips = HotfixPolicy("").isSkipRunningCheck();

  std::filesystem::current_path(folder);
  EXPECT_FALSE(skips);
}

}  // namespace
}  // namespace installer::test
