// The sample's packages break no rule of hotfixctl lint; and what the sample's launcher makes of
// manifests and sites that break one.

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
  // Puts other words everywhere in the place of some in a manifest of the package.
  static void exchange(const fs::path& package, const std::string& name, const std::string& words,
                       const std::string& others) {
    const fs::path manifest = package.parent_path() / "deploy" / name;
    std::string text = contentOf(manifest);
    ASSERT_NE(std::string::npos, text.find(words)) << words;
    for (std::size_t at = text.find(words); at != std::string::npos;
         at = text.find(words, at + others.size()))
      text.replace(at, words.size(), others);
    writeText(manifest, text);
  }
  // What the launcher answers to the package's manifest of that name.
  int launch(const fs::path& package, const std::string& name) const {
    _world.provide(package, name);
    _world.stamp("0101210000");
    return _world.install(siteOf(package).string());
  }
  // The same for its install manifest with these words in the place of others.
  int install(const fs::path& package, const std::string& words, const std::string& others) const {
    exchange(package, "install.hotfix.xml", words, others);
    return launch(package, "install.hotfix.xml");
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

TEST_F(LintTest, AManifestWithoutTheWayToItsFeaturesIsUnusable) {
  installer::proves("LINT-8");
  int number = 0;
  for (const std::string element : {"domain-object", "object-data", "install"}) {
    const fs::path package = _world.makeHotfix(std::to_string(++number));
    exchange(package, "install.hotfix.xml", "<" + element + ">", "<other>");
    exchange(package, "install.hotfix.xml", "</" + element + ">", "</other>");

    EXPECT_THAT(lint(package).output, HasSubstr("[HF302]"));

    EXPECT_EQ(1, launch(package, "install.hotfix.xml")) << element;
  }
}

TEST_F(LintTest, AManifestWithoutInstallFeaturesInstallsNothing) {
  installer::proves("LINT-8");
  const fs::path package = _world.makeHotfix("one");
  exchange(package, "install.hotfix.xml", "installfeature", "other");
  const auto before = _world.features();

  EXPECT_THAT(lint(package).output, HasSubstr("[HF302]"));

  EXPECT_EQ(0, launch(package, "install.hotfix.xml"));
  EXPECT_EQ(before, _world.features());
}

// The manifest that removes the hotfix, with these words in the place of others: the features of
// the instance after the removal, which ends with the status.
class LintRemovalTest : public LintTest {
 protected:
  std::vector<std::string> afterRemoval(const std::string& words, const std::string& others,
                                        int status, const std::string& rule) {
    installer::proves("LINT-8");
    const fs::path package = _world.makeHotfix("one");
    EXPECT_EQ(0, launch(package, "install.hotfix.xml"));
    EXPECT_THAT(_world.features(), Contains(kFeature));
    exchange(package, "uninstall.hotfix.xml", words, others);

    EXPECT_THAT(lint(package).output, HasSubstr("[" + rule + "]"));

    EXPECT_EQ(status, launch(package, "uninstall.hotfix.xml"));
    return _world.features();
  }
};

TEST_F(LintRemovalTest, ADamagedManifestLeavesTheFeature) {
  EXPECT_THAT(afterRemoval("</install>", "", 1, "HF311"), Contains(kFeature));
}

TEST_F(LintRemovalTest, AManifestWithoutTheWayToItsFeaturesLeavesTheFeature) {
  EXPECT_THAT(afterRemoval("domain-object>", "other>", 1, "HF312"), Contains(kFeature));
}

TEST_F(LintRemovalTest, AManifestWithoutItsFeatureLeavesTheFeature) {
  EXPECT_THAT(afterRemoval("id=\"com.quillmere.hotfix\" version",
                           "id=\"com.quillmere.other\" version", 0, "HF313"),
              Contains(kFeature));
}

TEST_F(LintRemovalTest, AManifestThatInstallsLeavesTheFeature) {
  EXPECT_THAT(afterRemoval("action=\"uninstall\"", "action=\"install\"", 0, "HF315"),
              Contains(kFeature));
}

TEST_F(LintRemovalTest, AManifestOfAnotherVersionLeavesTheFeature) {
  EXPECT_THAT(afterRemoval("version=\"6.2.3.1\"", "version=\"6.2.3.0\"", 0, "HF316"),
              Contains(kFeature));
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
