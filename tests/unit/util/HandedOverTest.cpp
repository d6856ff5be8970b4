#include "util/HandedOver.h"

#include <gtest/gtest.h>

namespace installer::test {
namespace {

TEST(HandedOverTest, AdministratorsAreTheGroupBesideTheOwner) {
  const FileAttributes attributes = handedTo("alice", 0640);

  EXPECT_EQ(attributes.owner, "alice");
  EXPECT_EQ(attributes.group, "admin");
  EXPECT_EQ(attributes.mode, 0640U);
}

TEST(HandedOverTest, AbsentOwnerIsANameThatNobodyHas) {
  EXPECT_EQ(handedTo(std::nullopt, 0640).owner, "");
}

TEST(HandedOverTest, SharedItemsAreOpenToOwnerAndGroup) {
  EXPECT_EQ(kSharedMode, 0775U);
}

}  // namespace
}  // namespace installer::test
