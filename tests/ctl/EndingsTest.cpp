#include "ctl/Endings.h"

#include <gtest/gtest.h>

#include <set>

namespace installer::ctl {
namespace {

TEST(EndingsTest, EachIsDescribedOnceWithANameOfItsOwn) {
  std::set<std::string_view> names;
  for (int number = 0; number <= static_cast<int>(Ending::atWork); ++number) {
    const EndingDescription& description = descriptionOf(static_cast<Ending>(number));
    EXPECT_EQ(number, static_cast<int>(description.ending));
    EXPECT_FALSE(description.meaning.empty());
    EXPECT_TRUE(description.remedy.ends_with('.')) << description.remedy;
    names.insert(description.name);
  }
  EXPECT_EQ(endings().size(), names.size());
}

TEST(EndingsTest, EachErrorCodeHasTheLibrarysMeaningAndARemedy) {
  for (const ErrorDescription& error : kErrors) {
    const EndingDescription* const description = descriptionOf(static_cast<int>(error.code));
    if (error.code == ErrorCode::none) {
      EXPECT_EQ(nullptr, description);
      continue;
    }
    ASSERT_NE(nullptr, description) << static_cast<int>(error.code);
    EXPECT_EQ(error.code, description->code);
    EXPECT_EQ(error.meaning, description->meaning);
  }
}

TEST(EndingsTest, RetiredCodesHaveNone) {
  for (const int number : kRetiredErrorCodes) EXPECT_EQ(nullptr, descriptionOf(number));
}

}  // namespace
}  // namespace installer::ctl
