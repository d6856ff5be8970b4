#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hotfix/base/Path.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/models/PathModel.h"

namespace installer {
namespace {

TEST(PathModelTest, RandomPathsAreHandledAsTheModelSays) {
  proves("PATH-1");
  const std::vector<std::string> pieces = {"/", "/",  "//",    "a", "b c",
                                           ".", "..", "x.app", "~", "\u00e9"};
  test::forRandomCases([&](test::RandomSource& random) {
    const std::string path = random.textOf(pieces, 9);
    const std::string component = random.textOf(pieces, 4);

    EXPECT_EQ(path::appendingComponent(path, component), model::appendingComponent(path, component))
        << path << " and " << component;
    EXPECT_EQ(path::deletingLastComponent(path), model::deletingLastComponent(path)) << path;
    EXPECT_EQ(path::lastComponent(path), model::lastComponent(path)) << path;
  });
}

}  // namespace
}  // namespace installer
