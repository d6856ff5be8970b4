#include "unit/platform/PreferencesContract.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "support/FakePreferences.h"

namespace installer::test {
namespace {

using PropertyList::Dictionary;
using ::testing::Optional;

TEST_P(PreferencesContractTest, AnswersAllValuesOfADomain) {
  _subject->store("com.example.tool", {{"a", "b"}, {"flag", true}});
  _subject->store("com.example.other", {{"c", "d"}});

  EXPECT_THAT(_preferences.domain("com.example.tool"),
              Optional(Dictionary{{"a", "b"}, {"flag", true}}));
}

TEST_P(PreferencesContractTest, AnswersTheGlobalDomain) {
  _subject->store(std::string(Preferences::kGlobalDomain), {{"HotfixTest", "value"}});

  // Where the domain is that of a real user it holds more.
  const std::optional<Dictionary> global = _preferences.domain(".GlobalPreferences");

  ASSERT_TRUE(global.has_value());
  const PropertyList::Value* const value = global->find("HotfixTest");
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(*value, PropertyList::Value("value"));
}

TEST_P(PreferencesContractTest, ADomainThatTheUserDoesNotHaveIsAbsent) {
  _subject->store("com.example.tool", {{"a", "b"}});

  EXPECT_EQ(_preferences.domain("com.example"), std::nullopt);
}

class FakeSubject : public PreferencesSubject {
 public:
  Preferences& preferences() override { return _preferences; }
  void store(const std::string& domain, const Dictionary& values) override {
    _preferences.domains[domain] = values;
  }

 private:
  FakePreferences _preferences;
};

INSTANTIATE_TEST_SUITE_P(MadeUp, PreferencesContractTest,
                         ::testing::Values(PreferencesKind{
                             "Fake", [] { return std::make_unique<FakeSubject>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
