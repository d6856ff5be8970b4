#include "support/Proves.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace installer {
namespace {

// What the running test has recorded, by key; a key of several values would be told once for each.
std::multimap<std::string, std::string> recorded() {
  const ::testing::TestResult& result =
      *::testing::UnitTest::GetInstance()->current_test_info()->result();
  std::multimap<std::string, std::string> properties;
  for (int i = 0; i < result.test_property_count(); ++i)
    properties.emplace(result.GetTestProperty(i).key(), result.GetTestProperty(i).value());
  return properties;
}

using Properties = std::multimap<std::string, std::string>;

TEST(ProvesTest, IdentifiersAreRecordedInOneProperty) {
  recordProofs({"FIRST-1", "SECOND-2"});

  EXPECT_EQ(recorded(), (Properties{{"proves", "FIRST-1 SECOND-2"}}));
}

TEST(ProvesTest, LaterIdentifiersJoinTheEarlierOnes) {
  RecordProperty("other", "kept");
  recordProofs({"FIRST-1"});

  recordProofs({"SECOND-2", "THIRD-3"});

  EXPECT_EQ(recorded(), (Properties{{"other", "kept"}, {"proves", "FIRST-1 SECOND-2 THIRD-3"}}));
}

}  // namespace
}  // namespace installer
