#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "hotfix/util/InstallUtil.h"
#include "platform/Platform.h"
#include "support/FakeClock.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/Sandbox.h"
#include "support/models/BundleModel.h"
#include "support/models/ManifestVersionModel.h"
#include "support/models/PathModel.h"
#include "support/models/UnsupportedCharactersModel.h"

namespace installer {
namespace {

using test::forRandomCases;
using test::RandomSource;

TEST(InstallUtilModelTest, RandomPathsAreRefusedAsTheModelSays) {
  const std::vector<std::string> ordinary = {"/", "a", " ", "$", "&",      "*",    "[", "]", "(",
                                             "{", "}", "<", ">", ",",      ".",    "-", "_", "+",
                                             "~", "@", "^", "`", "\u00e9", "\xE9", "\n"};
  const std::vector<std::string> all = {"/", "a", " ", "!", "\"", "'", ";", "\\",
                                        "#", "%", "|", "=", "?",  ":", "$", "\u00e9"};
  forRandomCases([&](RandomSource& random) {
    std::optional<std::string> path;
    if (random.below(100) != 0) path = random.textOf(ordinary, 12);
    if (path && random.below(2) == 0) path = *path + random.oneOf(all) + random.textOf(ordinary, 4);

    EXPECT_EQ(InstallUtil::containUnSupportedCharacters(path),
              model::containsUnsupportedCharacters(path))
        << path.value_or("(null)");
  });
}

TEST(InstallUtilModelTest, RandomMomentsGiveTheModelsStamp) {
  proves("STAMP-1");
  test::FakeClock clock;
  Platform platform;
  platform.clock = &clock;
  const ScopedPlatform scope(platform);
  forRandomCases([&](RandomSource& random) {
    const auto from = [&random](int first, int last) {
      return first + static_cast<int>(random.below(static_cast<std::size_t>(last - first + 1)));
    };
    const int year = from(1970, 2199);
    const int month = from(1, 12);
    const int day = from(1, 31);
    const int hour = from(0, 23);
    const int minute = from(0, 59);
    clock.set(year, month, day, hour, minute, from(0, 60));

    EXPECT_EQ(InstallUtil::generateNewManifestVersion(),
              model::manifestVersion(year, month, day, hour, minute));
  });
}

TEST(InstallUtilModelTest, RandomNumbersArePaddedAsTheModelSays) {
  proves("STAMP-2");
  const std::vector<std::string> pieces = {"0", "1", "9", "12", "a", " "};
  forRandomCases([&](RandomSource& random) {
    const std::string text = random.textOf(pieces, 3);

    EXPECT_EQ(InstallUtil::processDate(text), model::padded(text));
  });
}

TEST(InstallUtilModelTest, RandomPathsLoseThreeOrFourComponents) {
  proves("PATH-4");
  const std::vector<std::string> pieces = {"/", "/", "//", "a", "Suite.mpkg", "..", "\u00e9"};
  forRandomCases([&](RandomSource& random) {
    const std::string path = random.textOf(pieces, 12);
    std::string expected = path;
    for (int times = 0; times < 3; ++times) expected = model::deletingLastComponent(expected);

    EXPECT_EQ(InstallUtil::getPathToMPKGThrough(path), expected) << path;
    EXPECT_EQ(InstallUtil::getInstallerRootThrough(path), model::deletingLastComponent(expected))
        << path;
  });
}

TEST(InstallUtilModelTest, RandomPathsTellTheirBundleAndTargetAsTheModelSays) {
  proves("PROCESS-5");
  const std::vector<std::string> pieces = {
      "/", "/",    "/Contents/MacOS", ".app",  ".app", "A", "app", "ap",
      ".", ".APP", "MacOS",           "\u00e9"};
  test::Sandbox sandbox;
  forRandomCases([&](RandomSource& random) {
    const std::string path = random.textOf(pieces, 10);

    EXPECT_EQ(InstallUtil::getBundlePath(path), model::bundlePath(path)) << path;
    EXPECT_EQ(InstallUtil::getTargetNameBy(path), model::targetName(path)) << path;
    sandbox.clearLog();
  });
}

}  // namespace
}  // namespace installer
