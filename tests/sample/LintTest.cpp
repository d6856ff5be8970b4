// The sample's packages break no rule of hotfixctl lint; and what the sample's launcher makes of
// manifests and sites that break one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "SampleWorld.h"
#include "support/Proves.h"

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr const char* kControl = HOTFIX_BINARY_DIR "/hotfixctl";
constexpr const char* kFeature = "com.quillmere.hotfix_6.2.3.1";

class LintTest : public ::testing::Test {
 protected:
  Outcome lint(const fs::path& package, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {kControl, "lint", package.string()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return run(arguments);
  }
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

TEST_F(LintTest, APluginThatTheInstanceHasNeedNotBeOnTheSite) {
  installer::proves("LINT-8");
  const fs::path package = _world.makeHotfix("one");
  const fs::path plugin = siteOf(package) / "plugins" / kFeature;
  fs::rename(plugin, _world.eclipse() / "plugins" / kFeature);

  EXPECT_THAT(lint(package, {"--instance", _world.app().string()}).output,
              Not(HasSubstr("[HF225]")));

  EXPECT_EQ(0, install(package, "<manifest>", "<manifest>"));
}

TEST_F(LintTest, AFeatureThatCannotBeReadFailsTheRun) {
  installer::proves("LINT-8");
  int number = 0;
  for (const std::string text : {"", "<feature>", "<feature><plugin id=\"a\"/></feature>"}) {
    const fs::path package = _world.makeHotfix(std::to_string(++number));
    writeText(siteOf(package) / "features" / kFeature / "feature.xml", text);

    EXPECT_THAT(lint(package).output, HasSubstr("[HF227]"));

    EXPECT_EQ(13, install(package, "<manifest>", "<manifest>")) << text;
  }
}

TEST_F(LintTest, ASiteThatIsNotThereOrHoldsNothingFailsTheRun) {
  installer::proves("LINT-8");
  const fs::path missing = _world.makeHotfix("missing");
  const fs::path empty = _world.makeHotfix("empty");
  fs::remove_all(siteOf(missing));
  fs::remove_all(siteOf(empty));
  fs::create_directory(siteOf(empty));

  EXPECT_THAT(lint(missing).output, HasSubstr("[HF221]"));
  EXPECT_THAT(lint(empty).output, HasSubstr("[HF223]"));

  EXPECT_EQ(13, install(missing, "<manifest>", "<manifest>"));
  EXPECT_EQ(13, install(empty, "<manifest>", "<manifest>"));
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
