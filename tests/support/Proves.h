#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace installer {

// Tells in the results of the running test which promises it proves, beside those that were told
// before: a property that is recorded again replaces its old value.
inline void recordProofs(std::initializer_list<std::string> identifiers) {
  const ::testing::TestResult& result =
      *::testing::UnitTest::GetInstance()->current_test_info()->result();
  std::string all;
  for (int i = 0; i < result.test_property_count(); ++i)
    if (result.GetTestProperty(i).key() == std::string("proves"))
      all = result.GetTestProperty(i).value();
  for (const std::string& identifier : identifiers) {
    if (!all.empty()) all += ' ';
    all += identifier;
  }
  ::testing::Test::RecordProperty("proves", all);
}

// The first statement of a test that proves promises of docs/behaviours:
//
//   proves("LOCK-1", "LOCK-3");
//
// scripts/check-promises reads these calls in the sources: identifiers are spelled out. Beside the
// namespace of the helpers, because tests of every namespace call it.
template <typename... Identifiers>
void proves(const Identifiers&... identifiers) {
  recordProofs({identifiers...});
}

}  // namespace installer
