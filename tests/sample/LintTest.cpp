// The sample's packages break no rule of hotfixctl lint; and what the sample's launcher makes of
// manifests and sites that break one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "SampleWorld.h"
#include "support/Proves.h"

namespace fs = std::filesystem;
using ::testing::HasSubstr;

namespace {

constexpr const char* kControl = HOTFIX_BINARY_DIR "/hotfixctl";
constexpr const char* kFeature = "com.quillmere.hotfix_6.2.3.1";

class LintTest : public ::testing::Test {
 protected:
  Outcome lint(const fs::path& package) const { return run({kControl, "lint", package.string()}); }
  static fs::path siteOf(const fs::path& package) {
    return package.parent_path().parent_path() / "updates/platform";
  }
  // What the launcher answers to the package's manifest with these words in the place of others.
  int install(const fs::path& package, const std::string& words, const std::string& others) const {
    const fs::path manifest = package.parent_path() / "deploy/install.hotfix.xml";
    std::string text = contentOf(manifest);
    text.replace(text.find(words), words.size(), others);
    writeText(manifest, text);
    _world.provide(package, "install.hotfix.xml");
    _world.stamp("0101210000");
    return _world.install(siteOf(package).string());
  }

  SampleWorld _world;
};

TEST_F(LintTest, ASamplePackageBreaksNoRule) {
  installer::proves("LINT-8");
  int number = 0;
  for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
           {}, {"--layout", "flat"}, {"--skip-running-check"}, {"--version", "6.2.3.2"}}) {
    const fs::path package = _world.makeHotfix(std::to_string(++number), options);

    const Outcome outcome = lint(package);

    EXPECT_EQ(0, outcome.status) << outcome.output;
    EXPECT_EQ("0 errors, 0 warnings, 0 notes", outcome.output);
  }
}

TEST_F(LintTest, AFeatureThatTheSiteLacksFailsTheRun) {
  installer::proves("LINT-8");
  const fs::path package = _world.makeHotfix("one", {"--without-feature"});

  EXPECT_THAT(lint(package).output, HasSubstr("[HF224]"));

  EXPECT_EQ(13, install(package, "<manifest>", "<manifest>"));
}

TEST_F(LintTest, APluginThatTheSiteLacksFailsTheRun) {
  installer::proves("LINT-8");
  const fs::path package = _world.makeHotfix("one");
  fs::remove_all(siteOf(package) / "plugins" / kFeature);

  EXPECT_THAT(lint(package).output, HasSubstr("[HF225]"));

  EXPECT_EQ(13, install(package, "<manifest>", "<manifest>"));
}

TEST_F(LintTest, AFeatureWithoutAnIdMakesTheManifestUnusable) {
  installer::proves("LINT-8");
  const fs::path package = _world.makeHotfix("one");

  EXPECT_EQ(1, install(package, "<feature id=\"com.quillmere.hotfix\"", "<feature"));

  EXPECT_THAT(lint(package).output, HasSubstr("[HF308]"));
}

TEST_F(LintTest, AnUnknownActionMakesTheManifestUnusable) {
  installer::proves("LINT-8");
  const fs::path package = _world.makeHotfix("one");

  EXPECT_EQ(1, install(package, "action=\"install\"", "action=\"update\""));

  EXPECT_THAT(lint(package).output, HasSubstr("[HF310]"));
}

}  // namespace
