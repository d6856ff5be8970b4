#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>

#include "SampleWorld.h"

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;

namespace {

std::string plistOf(const fs::path& package) {
  return contentOf(package / "Contents/Resources/hotfix.plist");
}

TEST(MakeInstanceTest, InstanceHasEverythingThatTheInstallerLooksFor) {
  const SampleWorld world;

  for (const char* const entry :
       {"Contents/Info.plist", "Contents/MacOS/Quillmere", "Contents/MacOS/shared",
        "Contents/MacOS/rcp/rcplauncher", "Contents/MacOS/rcp/rcplauncher.properties",
        "Contents/MacOS/rcp/plugin_customization.ini", "Contents/MacOS/rcp/installInfo.plist",
        "Contents/MacOS/rcp/deploy/install.xml", "Contents/MacOS/rcp/deploy/.keystore",
        "Contents/MacOS/rcp/eclipse/plugins/com.kiv.rcp.base_6.2.3.20121115-1200",
        "Contents/MacOS/rcp/systemdata/.config/rcpinstall.properties"}) {
    EXPECT_TRUE(fs::exists(world.app() / entry)) << entry;
  }
}

TEST(MakeInstanceTest, DataFolderCanLieElsewhere) {
  const fs::path data = fs::temp_directory_path() / ("sample-data-" + std::to_string(getpid()));

  const SampleWorld world({"--rcpdata", data.string()});

  EXPECT_TRUE(fs::exists(data / ".config/rcpinstall.properties"));
  EXPECT_FALSE(fs::exists(world.rcpHome() / "systemdata"));
  EXPECT_THAT(contentOf(world.rcpHome() / "rcplauncher.properties"),
              HasSubstr("rcp.data=" + data.string() + "\n"));
  fs::remove_all(data);
}

TEST(MakeInstanceTest, WorkspaceFlagCanBeLeftOut) {
  const SampleWorld world({"--no-workspace-flag"});

  EXPECT_TRUE(fs::is_directory(world.rcpHome() / "systemdata"));
  EXPECT_FALSE(fs::exists(world.rcpHome() / "systemdata/.config"));
}

TEST(MakeInstanceTest, ExistingInstanceIsNotTouched) {
  const SampleWorld world;
  const fs::path script = fs::path(HOTFIX_SOURCE_DIR) / "sample/make-instance";
  writeText(world.rcpHome() / "mine", "mine");

  const Outcome again = run({script.string(), "--programs", HOTFIX_BINARY_DIR "/sample",
                             world.app().parent_path().string()});

  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(contentOf(world.rcpHome() / "mine"), "mine");
}

TEST(MakeHotfixTest, DefaultLayoutNeedsNoSiteInThePackage) {
  const SampleWorld world;

  const fs::path package = world.makeHotfix("hf", {"--version", "7.1"});

  EXPECT_EQ(package, world.root() / "hf/mac/HF.pkg");
  EXPECT_THAT(namesIn(world.root() / "hf"), ElementsAre("mac", "updates"));
  EXPECT_THAT(plistOf(package), AllOf(HasSubstr("<string>7.1</string>"), HasSubstr("<true/>"),
                                      Not(HasSubstr("updateSiteList"))));
  EXPECT_THAT(contentOf(package / "Contents/Info.plist"),
              HasSubstr("<string>com.quillmere.hotfix.7.1</string>"));
  EXPECT_TRUE(fs::exists(package / "../../updates/platform/features/com.quillmere.hotfix_7.1"));
}

TEST(MakeHotfixTest, FlatLayoutNamesItsSite) {
  const SampleWorld world;

  const fs::path package = world.makeHotfix("hf", {"--layout", "flat"});

  EXPECT_THAT(namesIn(world.root() / "hf"), ElementsAre("HF.pkg", "deploy", "updates"));
  EXPECT_THAT(plistOf(package), HasSubstr("<key>updateSiteList</key>\n"
                                          "\t<string>${package}/../updates</string>"));
  EXPECT_THAT(contentOf(world.root() / "hf/deploy/install.hotfix.xml"),
              HasSubstr("url=\"${installer.root}/../updates\" action=\"install\""));
}

TEST(MakeHotfixTest, OptionsReachThePackage) {
  const SampleWorld world;

  const fs::path package =
      world.makeHotfix("hf", {"--registered", "--skip-running-check", "--name", "A & B",
                              "--no-uninstall-manifest", "--package", "P.pkg"});

  EXPECT_EQ(package.filename(), "P.pkg");
  EXPECT_THAT(plistOf(package), AllOf(HasSubstr("<false/>"), HasSubstr("A &amp; B"),
                                      HasSubstr("<key>SKIPRUNNINGCHECK</key>\n"
                                                "\t<string>true</string>")));
  EXPECT_FALSE(fs::exists(package.parent_path() / "deploy/uninstall.hotfix.xml"));
}

TEST(MakeHotfixTest, WhatIsNotGivenIsTheSamplesOwn) {
  const SampleWorld world;

  const fs::path deploy = world.makeHotfix("hf", {"--id", "x.y"}).parent_path() / "deploy";

  EXPECT_EQ(contentOf(deploy / "plugin_customization.ini"),
            "com.quillmere.ui/greeting=Welcome to hotfix 6.2.3.1\nx.y/active=true\n");
  EXPECT_THAT(namesIn(deploy), IsSupersetOf({".keystore", ".keystore.hotfix"}));
  EXPECT_THAT(namesIn(deploy / "extras"), ElementsAre("fonts", "notes-6.2.3.1.txt"));
  EXPECT_THAT(namesIn(deploy / "../../updates/platform/plugins"), ElementsAre("x.y_6.2.3.1"));
}

TEST(MakeHotfixTest, SiteMayLackFeatureOrArtifacts) {
  const SampleWorld world;

  world.makeHotfix("one", {"--without-feature"});
  world.makeHotfix("two", {"--without-artifacts"});

  EXPECT_THAT(namesIn(world.root() / "one/updates/platform/features"), ElementsAre());
  EXPECT_THAT(namesIn(world.root() / "two/updates/platform"), ElementsAre("features"));
}

// Both scripts, given all that the one for the real platform would have to build.
class OwnContentTest : public ::testing::TestWithParam<const char*> {
 protected:
  OwnContentTest() {
    std::string name = (fs::temp_directory_path() / "own-XXXXXX").string();
    _root = mkdtemp(name.data());
    fs::create_directories(_root / "own/site/features/f");
    fs::create_directories(_root / "own/extras/a/b");
    writeText(own("site/content.jar"), "content");
    writeText(own("keys"), "keys");
  }
  ~OwnContentTest() override { fs::remove_all(_root); }

  std::string own(const std::string& name) const { return (_root / "own" / name).string(); }

  Outcome make(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{(fs::path(HOTFIX_SOURCE_DIR) / GetParam()).string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command);
  }

  // The options without which the other script needs its platform, then the given ones; the path of
  // the package.
  fs::path makeHotfix(const std::vector<std::string>& options,
                      const std::vector<std::string>& behind = {}) const {
    std::vector<std::string> arguments{"--site", own("site"), "--keystore", own("keys")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back((_root / "hf").string());
    arguments.insert(arguments.end(), behind.begin(), behind.end());
    const Outcome made = make(arguments);
    EXPECT_EQ(made.status, 0);
    return made.output;
  }

  fs::path _root;
};

TEST_P(OwnContentTest, CustomizationIsTheGivenFile) {
  writeText(own("my settings"), "a/b=c\n");

  const fs::path package = makeHotfix({"--customization", own("my settings")});

  EXPECT_EQ(contentOf(package.parent_path() / "deploy/plugin_customization.ini"), "a/b=c\n");
}

TEST_P(OwnContentTest, KeyStoresAreTheGivenFilesUnderNamesThatTheInstallerTakes) {
  writeText(own(".keystore"), "first");
  writeText(own(".KeyStore.two"), "second");

  const fs::path package =
      makeHotfix({"--keystore", own(".keystore"), "--keystore", own(".KeyStore.two")});

  const fs::path deploy = package.parent_path() / "deploy";
  EXPECT_THAT(namesIn(deploy), ElementsAre(".KeyStore.two", ".keystore", ".keystore.keys", "extras",
                                           "install.hotfix.xml", "plugin_customization.ini",
                                           "uninstall.hotfix.xml"));
  EXPECT_EQ(contentOf(deploy / ".keystore"), "first");
  EXPECT_EQ(contentOf(deploy / ".KeyStore.two"), "second");
  EXPECT_EQ(contentOf(deploy / ".keystore.keys"), "keys");
}

TEST_P(OwnContentTest, TwoKeyStoresOfOneNameAreRefused) {
  writeText(own(".keystore.keys"), "other keys");

  const Outcome made = make({"--site", own("site"), "--keystore", own("keys"), "--keystore",
                             own(".keystore.keys"), (_root / "hf").string()});

  EXPECT_EQ(made.status, 1);
}

TEST_P(OwnContentTest, ExtrasAreWhatIsInTheGivenFolder) {
  writeText(own("extras/a/b/file"), "extra");
  fs::create_symlink("a/b/file", own("extras/link"));

  const fs::path package = makeHotfix({"--extras", own("extras")});

  const fs::path extras = package.parent_path() / "deploy/extras";
  EXPECT_THAT(namesIn(extras), ElementsAre("a", "link"));
  EXPECT_EQ(contentOf(extras / "a/b/file"), "extra");
  EXPECT_EQ(fs::read_symlink(extras / "link"), "a/b/file");
}

TEST_P(OwnContentTest, SiteIsWhatIsInTheGivenFolder) {
  makeHotfix({});

  EXPECT_THAT(namesIn(_root / "hf/updates/platform"), ElementsAre("content.jar", "features"));
  EXPECT_EQ(contentOf(_root / "hf/updates/platform/content.jar"), "content");
}

TEST_P(OwnContentTest, ManifestsNameTheFeatureThatTheOptionsName) {
  const fs::path deploy =
      makeHotfix({"--id", "my.feature", "--version", "1.2.3"}).parent_path() / "deploy";

  EXPECT_THAT(contentOf(deploy / "install.hotfix.xml"),
              HasSubstr("<feature id=\"my.feature\" version=\"1.2.3\" "
                        "url=\"${installer.root}/../../updates/platform\" action=\"install\"/>"));
  EXPECT_THAT(contentOf(deploy / "uninstall.hotfix.xml"),
              HasSubstr("<feature id=\"my.feature\" version=\"1.2.3\" url=\"\" "
                        "action=\"uninstall\"/>"));
}

TEST_P(OwnContentTest, WithdrawingManifestsNameNoFeature) {
  const fs::path deploy = makeHotfix({"--withdraw"}).parent_path() / "deploy";

  for (const char* const name : {"install.hotfix.xml", "uninstall.hotfix.xml"}) {
    EXPECT_THAT(contentOf(deploy / name),
                AllOf(HasSubstr("<requirements>"), Not(HasSubstr("<feature "))));
  }
}

TEST_P(OwnContentTest, OptionsReachThePackage) {
  const fs::path package =
      makeHotfix({"--registered", "--skip-running-check", "--name", "A & B", "--layout", "flat",
                  "--no-uninstall-manifest", "--package", "P.pkg"},
                 {"7.8"});

  EXPECT_EQ(package, _root / "hf/P.pkg");
  EXPECT_THAT(
      plistOf(package),
      AllOf(HasSubstr("<false/>"), HasSubstr("A &amp; B"), HasSubstr("<string>7.8</string>"),
            HasSubstr("<key>SKIPRUNNINGCHECK</key>"), HasSubstr("${package}/../updates")));
  EXPECT_FALSE(fs::exists(package.parent_path() / "deploy/uninstall.hotfix.xml"));
}

TEST_P(OwnContentTest, WhatIsNotThereIsToldBeforeAnythingIsMade) {
  const std::vector<std::vector<std::string>> refused = {
      {"--customization", own("nothing")},
      {"--keystore", own("extras")},
      {"--extras", own("keys")},
      {"--site", own("nothing")},
      {"--site", own("site"), "--without-feature"},
      {"--layout", "round"},
      {"--version", "../1"},
      {"--id", "a/b"},
      {"--unknown"}};

  for (const std::vector<std::string>& options : refused) {
    std::vector<std::string> arguments = options;
    arguments.push_back((_root / "hf").string());

    EXPECT_EQ(make(arguments).status, 1) << ::testing::PrintToString(options);
    EXPECT_FALSE(fs::exists(_root / "hf")) << ::testing::PrintToString(options);
  }
}

TEST_P(OwnContentTest, ExistingPackageIsNotTouched) {
  const fs::path package = makeHotfix({});
  writeText(package / "mine", "mine");

  EXPECT_EQ(
      make({"--site", own("site"), "--keystore", own("keys"), (_root / "hf").string()}).status, 1);

  EXPECT_EQ(contentOf(package / "mine"), "mine");
}

INSTANTIATE_TEST_SUITE_P(BothScripts, OwnContentTest,
                         ::testing::Values("sample/make-hotfix", "sample/equinox/make-hotfix"),
                         [](const auto& script) {
                           return script.index == 0 ? "Sample" : "RealPlatform";
                         });

// The lines of a script's help that tell an option, up to where its words begin.
std::vector<std::string> optionsOf(const std::string& script) {
  const Outcome outcome = run({(fs::path(HOTFIX_SOURCE_DIR) / script).string(), "--help"});
  EXPECT_EQ(outcome.status, 0) << script;
  std::vector<std::string> options;
  std::istringstream lines(outcome.output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("  --")) options.push_back(line.substr(0, line.find("  ", 2)));
  }
  return options;
}

TEST(MakeHotfixTest, BothScriptsTakeTheSameOptions) {
  const std::vector<std::string> options = optionsOf("sample/make-hotfix");

  EXPECT_EQ(options, optionsOf("sample/equinox/make-hotfix"));
  EXPECT_THAT(options, IsSupersetOf({"  --customization FILE", "  --keystore FILE",
                                     "  --extras FOLDER", "  --site FOLDER"}));
}

// A program that stays up until this object goes.
class Staying {
 public:
  // Returns when it is the program, and no more the process that was to become it: that is when
  // what such a process does not keep is closed.
  explicit Staying(std::string program) {
    std::array<int, 2> ends{};
    EXPECT_EQ(0, pipe2(ends.data(), O_CLOEXEC));
    std::string option = "--stay";
    std::string seconds = "3600";
    std::array<char*, 4> arguments{program.data(), option.data(), seconds.data(), nullptr};
    EXPECT_EQ(0,
              posix_spawn(&_process, program.c_str(), nullptr, nullptr, arguments.data(), environ));
    close(ends[1]);
    char nothing = 0;
    EXPECT_EQ(0, read(ends[0], &nothing, 1));
    close(ends[0]);
  }
  Staying(const Staying&) = delete;
  Staying& operator=(const Staying&) = delete;
  ~Staying() {
    if (_process <= 0) return;
    kill(_process, SIGTERM);
    waitpid(_process, nullptr, 0);
  }

  fs::path executable() const {
    std::error_code unknown;
    return fs::read_symlink("/proc/" + std::to_string(_process) + "/exe", unknown);
  }

 private:
  pid_t _process = -1;
};

TEST(ApplicationTest, RunningProcessIsSeenInsideItsBundle) {
  const SampleWorld world;
  const fs::path program = world.app() / "Contents/MacOS/Quillmere";

  const Staying application(program.string());

  EXPECT_EQ(application.executable(), program);
}

TEST(ApplicationTest, TellsItsFeatures) {
  const SampleWorld world;

  EXPECT_THAT(world.applicationOutput(), HasSubstr("feature com.quillmere.platform_6.2.3\n"));
}

}  // namespace
