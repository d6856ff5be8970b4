#include "ctl/Endings.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "ctl/install/Outcome.h"
#include "ctl/trace/Run.h"
#include "support/Proves.h"

namespace installer::ctl {
namespace {

nlohmann::json schema(const std::string& name) {
  std::ifstream file(HOTFIX_SOURCE_DIR "/src/ctl/schema/" + name + ".schema.json");
  return nlohmann::json::parse(file);
}

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

// A reader may take every name for known that the schema lists, and no other.
TEST(EndingsTest, TheSchemasListEveryNameInUse) {
  proves("CTL-6");
  std::vector<std::string_view> names;
  for (const EndingDescription& description : endings()) names.push_back(description.name);
  std::vector<std::string_view> steps;
  for (int kind = 0; kind <= static_cast<int>(StepKind::collectLogs); ++kind)
    steps.push_back(nameOf(static_cast<StepKind>(kind)));
  std::vector<int> codes;
  for (const ErrorDescription& error : kErrors) codes.push_back(static_cast<int>(error.code));

  const nlohmann::json explain = schema("explain-1");
  const nlohmann::json& run = explain.at("definitions").at("run").at("properties");
  EXPECT_EQ(nlohmann::json(names), run.at("ending").at("enum"));
  EXPECT_EQ(nlohmann::json(codes), run.at("errorCode").at("enum"));
  EXPECT_EQ(nlohmann::json(steps),
            run.at("steps").at("items").at("properties").at("step").at("enum"));
  EXPECT_EQ(nlohmann::json(names), schema("status-1").at("definitions").at("ending").at("enum"));
}

TEST(EndingsTest, CausesOfInstallationsAndStepsAreFoundByTheirNames) {
  const nlohmann::json install = schema("install-1");
  const nlohmann::json& causes = install.at("properties").at("cause").at("enum");
  ASSERT_LT(endings().size(), causes.size());
  for (const std::string name : causes) {
    const auto outcome = install::outcomeNamed(name);
    ASSERT_TRUE(outcome) << name;
    EXPECT_EQ(name, outcome->name);
  }
  for (int kind = 0; kind <= static_cast<int>(StepKind::collectLogs); ++kind)
    EXPECT_EQ(static_cast<StepKind>(kind), stepNamed(nameOf(static_cast<StepKind>(kind))));
  EXPECT_FALSE(install::outcomeNamed("unheard-of"));
  EXPECT_FALSE(stepNamed("unheard-of"));
}

TEST(EndingsTest, RetiredCodesHaveNone) {
  for (const int number : kRetiredErrorCodes) EXPECT_EQ(nullptr, descriptionOf(number));
}

}  // namespace
}  // namespace installer::ctl
