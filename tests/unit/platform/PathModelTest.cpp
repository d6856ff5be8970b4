#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/Path.h"
#include "platform/Platform.h"
#include "support/FakeUserContext.h"
#include "support/RandomText.h"
#include "support/models/PathModel.h"

namespace installer {
namespace {

TEST(PathModelTest, RandomPathsAreHandledAsTheModelSays) {
  const std::vector<std::string> pieces = {"/", "/",  "//",    "a", "b c",
                                           ".", "..", "x.app", "~", "\u00e9"};
  test::forRandomCases([&](test::RandomSource& random) {
    const std::string path = random.textOf(pieces, 9);
    const std::string component = random.textOf(pieces, 4);

    EXPECT_EQ(path::appendingComponent(path, component), model::appendingComponent(path, component))
        << path << " and " << component;
    EXPECT_EQ(path::deletingLastComponent(path), model::deletingLastComponent(path)) << path;
    EXPECT_EQ(path::lastComponent(path), model::lastComponent(path)) << path;
    EXPECT_EQ(path::components(path), model::components(path)) << path;
  });
}

TEST(PathModelTest, RandomTildesAreExpandedAsTheModelSays) {
  const std::vector<std::string> begins = {"~", "~", "~ada", "~homeless", "~nobody", "", "/~"};
  const std::vector<std::string> pieces = {"/", "//", "a", "~", "~ada", "..", "\u00e9"};
  const std::vector<std::optional<std::string>> variables = {std::nullopt, "", "/", "/h//me/",
                                                             "relative"};
  const model::Homes homes = {{"ada", "/Users/ada/"}, {"homeless", ""}, {"eve", "/"}};
  test::FakeUserContext users;
  for (const auto& [name, home] : homes)
    users.userList.push_back({name, static_cast<uid_t>(users.userList.size()), 0, home});
  Platform platform;
  platform.users = &users;
  const ScopedPlatform scope(platform);
  test::forRandomCases([&](test::RandomSource& random) {
    const std::string path = random.oneOf(begins) + random.textOf(pieces, 5);
    const std::optional<std::string> home = random.oneOf(variables);
    users.variables.clear();
    if (home) users.variables["HOME"] = *home;
    users.effectiveUser = static_cast<uid_t>(random.below(homes.size() + 1));
    const std::string user = users.currentUserName().value_or("nobody");

    EXPECT_EQ(path::expandingTilde(path), model::expandingTilde(path, home, user, homes)) << path;
  });
}

}  // namespace
}  // namespace installer
