// hotfixctl removes a hotfix from the sample's instance, and rehearses its packages.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "SampleWorld.h"
#include "support/Proves.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr const char* kControl = HOTFIX_BINARY_DIR "/hotfixctl";
constexpr const char* kFeature = "com.quillmere.hotfix_6.2.3.1";

class RemovalTest : public ::testing::Test {
 protected:
  Outcome control(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), kControl);
    return run(arguments);
  }

  // What the installer leaves, as far as a removal asks for it.
  void install(const fs::path& package) const {
    _world.provide(package, "install.hotfix.xml");
    _world.stamp("0101210000");
    const fs::path site = package.parent_path().parent_path() / "updates/platform";
    ASSERT_EQ(0, _world.install(site.string()));
    fs::copy_file(package.parent_path() / "deploy/uninstall.hotfix.xml",
                  _world.manifest("uninstall.hotfix.xml"));
    writeText(_world.rcpHome() / "installInfo.plist",
              "<plist version=\"1.0\"><dict><key>version</key><string>6.2.3</string>"
              "<key>hotfixVersion</key><string>6.2.3.1</string></dict></plist>");
  }

  SampleWorld _world;
};

TEST_F(RemovalTest, TheHotfixOfTheSampleIsTakenOut) {
  installer::proves("UNDO-1");
  install(_world.makeHotfix("one"));
  ASSERT_THAT(_world.features(), Contains(kFeature));

  const Outcome outcome = control({"remove", _world.app().string()});

  EXPECT_EQ(0, outcome.status) << outcome.output;
  EXPECT_THAT(_world.features(), Not(Contains(kFeature)));
  EXPECT_THAT(contentOf(_world.rcpHome() / "installInfo.plist"), Not(HasSubstr("hotfixVersion")));
  EXPECT_THAT(outcome.output, Not(HasSubstr("still names")));
  EXPECT_EQ(1, control({"status", _world.app().string()}).status);
}

TEST_F(RemovalTest, ARehearsalShowsWhatTheSamplesLauncherDoes) {
  installer::proves("REHEARSE-1");
  const fs::path package = _world.makeHotfix("one");

  const Outcome outcome =
      control({"rehearse", package.string(), "--instance", _world.app().string()});

  EXPECT_EQ(0, outcome.status) << outcome.output;
  EXPECT_THAT(outcome.output, HasSubstr("\n  + com.quillmere.hotfix 6.2.3.1\n"));
  EXPECT_THAT(outcome.output, HasSubstr("\n  + Contents/MacOS/rcp/eclipse/features/" +
                                        std::string(kFeature) + " (folder"));
  EXPECT_THAT(_world.features(), Not(Contains(kFeature)));
}

TEST_F(RemovalTest, ARehearsalCanHaveASampleInstanceOfItsOwn) {
  installer::proves("REHEARSE-1");
  const fs::path package = _world.makeHotfix("one");
  const std::string script = HOTFIX_SOURCE_DIR "/sample/rehearse";

  const Outcome outcome =
      run({script, "--programs", HOTFIX_BINARY_DIR "/sample", package.string(), "--all"});

  EXPECT_EQ(0, outcome.status) << outcome.output;
  EXPECT_THAT(outcome.output, HasSubstr("\n  + com.quillmere.hotfix 6.2.3.1\n"));
  const std::string place = outcome.output.substr(outcome.output.find("/tmp/"));
  EXPECT_FALSE(fs::exists(place.substr(0, place.find("/Applications"))));
  EXPECT_EQ(1, run({script, "--programs", "/missing", "x"}).status);
}

TEST_F(RemovalTest, ARehearsalShowsASiteThatLacksTheFeature) {
  installer::proves("REHEARSE-2");
  const fs::path package = _world.makeHotfix("one", {"--without-feature"});

  const Outcome outcome =
      control({"rehearse", package.string(), "--instance", _world.app().string()});

  EXPECT_EQ(1, outcome.status) << outcome.output;
  EXPECT_THAT(outcome.output, HasSubstr("the platform's launcher did not install the hotfix"));
}

}  // namespace
