#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "ctl/ControlTest.h"
#include "ctl/Schema.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kFolder = "/Users/alice/hotfixes/new";
constexpr const char* kAbove = "/Users/alice/hotfixes";
constexpr const char* kSite = "/Users/alice/own/site";
constexpr const char* kNameOfFeature = "com.quillmere.hotfix_1.5";

std::string made(const std::string& below) {
  return std::string(kFolder) + "/" + below;
}

class NewCommandTest : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    _sandbox.makeFolder(kAbove);
    writeFeature(kNameOfFeature);
    _sandbox.writeFile("/Users/alice/own/keys", "keys");
    _sandbox.writeFile("/Users/alice/own/extras/a/file", "extra", 0600);
    _sandbox.writeFile("/Users/alice/own/extras/program", "run", 0700);
    _sandbox.writeFile("/Users/alice/own/settings", "my.plugin/name=\xC3\xBC\r\n");
  }

  void writeFeature(const std::string& name) {
    _sandbox.writeFile(std::string(kSite) + "/features/" + name + "/feature.xml",
                       "<feature id=\"x\"/>");
  }

  // All that is needed, by options.
  std::vector<std::string> arguments(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> all = {"new",          kFolder,
                                    "--version",    "1.5",
                                    "--bundle",     "Quillmere",
                                    "--identifier", "com.quillmere.fix",
                                    "--feature",    "com.quillmere.hotfix",
                                    "--site",       kSite,
                                    "--keystore",   "/Users/alice/own/keys"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  // The same without an option and its value.
  std::vector<std::string> argumentsWithout(const std::string& option,
                                            const std::vector<std::string>& more = {}) const {
    std::vector<std::string> all = arguments(more);
    const auto found = std::find(all.begin(), all.end(), option);
    all.erase(found, found + 2);
    return all;
  }

  RunResult make(const std::vector<std::string>& more = {}, const RunOptions& options = {}) {
    return control(arguments(more), options);
  }

  // The run ends with this status and one line, and leaves the folders as they were.
  void expectRefusal(const std::vector<std::string>& words, int status, const std::string& reason,
                     const RunOptions& options = {}) {
    const auto before = _sandbox.tree("/Users");
    const RunResult result = control(words, options);
    EXPECT_EQ(status, result.status) << reason;
    EXPECT_THAT(result.err, AllOf(StartsWith("hotfixctl: "), HasSubstr(reason)));
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
    EXPECT_EQ(before, _sandbox.tree("/Users")) << reason;
  }

  std::string contentOf(const std::string& below) const {
    return _sandbox.readFile(made(below)).value_or("nothing");
  }
};

// --- What is made --------------------------------------------------------------------------------

TEST_F(NewCommandTest, ThePackageHasWhatTheOptionsName) {
  proves("NEW-1");
  const RunResult result =
      make({"--customization", "/Users/alice/own/settings", "--extras", "/Users/alice/own/extras"});

  EXPECT_EQ(0, result.status) << result.err << result.out;
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out, AllOf(HasSubstr("Package       " + made("mac/Hotfix.pkg\n")),
                                HasSubstr("Update site   " + made("updates/platform\n")),
                                HasSubstr("Features      com.quillmere.hotfix_1.5\n"),
                                HasSubstr("Key stores    .keystore.keys\n"),
                                HasSubstr("0 errors, 0 warnings, 0 notes\n")));
  const ListValue list = listAt(made("mac/Hotfix.pkg/Contents/Resources/hotfix.plist"));
  EXPECT_EQ("Quillmere", list.stringAt("bundleName"));
  EXPECT_EQ("Contents/MacOS", list.stringAt("frameworkPath"));
  EXPECT_EQ("1.5", list.stringAt("version"));
  const ListValue info = listAt(made("mac/Hotfix.pkg/Contents/Info.plist"));
  EXPECT_EQ("com.quillmere.fix", info.stringAt("CFBundleIdentifier"));
  EXPECT_EQ("1.5", info.stringAt("CFBundleShortVersionString"));
  EXPECT_EQ("my.plugin/name=\\u00fc\n", contentOf("mac/deploy/plugin_customization.ini"));
  EXPECT_EQ("keys", contentOf("mac/deploy/.keystore.keys"));
  EXPECT_EQ("extra", contentOf("mac/deploy/extras/a/file"));
  EXPECT_THAT(contentOf("mac/deploy/install.hotfix.xml"),
              HasSubstr("<feature id=\"com.quillmere.hotfix\" version=\"1.5\" "
                        "url=\"${installer.root}/../../updates/platform\" action=\"install\"/>"));
  EXPECT_THAT(contentOf("mac/deploy/uninstall.hotfix.xml"),
              HasSubstr("<feature id=\"com.quillmere.hotfix\" version=\"1.5\" url=\"\" "
                        "action=\"uninstall\"/>"));
  EXPECT_TRUE(
      _sandbox.isRegular(made("updates/platform/features/") + kNameOfFeature + "/feature.xml"));
}

TEST_F(NewCommandTest, LintHasNothingToSayAndTheInstallerInstallsIt) {
  proves("NEW-2");
  ASSERT_EQ(0,
            make({"--instance", _instance.bundle, "--extras", "/Users/alice/own/extras"}).status);
  _package.folder = made("mac/Hotfix.pkg");

  const RunResult lint = control({"lint", _package.folder, "--instance", _instance.bundle});
  EXPECT_EQ(0, lint.status);
  EXPECT_EQ("0 errors, 0 warnings, 0 notes\n", lint.out);

  EXPECT_EQ(0, install().status);
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ("com.quillmere.fix", recorded("installedHotfixBundleID"));
  EXPECT_EQ("keys", _sandbox.readFile(_instance.deploy(".keystore.keys")));
  EXPECT_EQ("extra", _sandbox.readFile(_instance.deploy("extras/a/file")));
}

TEST_F(NewCommandTest, TheSameWishesMakeTheSameBytesAndModes) {
  proves("NEW-3");
  RunOptions narrow;
  narrow.mask = 077;
  const std::vector<std::string> more = {"--extras", "/Users/alice/own/extras"};
  ASSERT_EQ(0, make(more).status);
  const auto first = _sandbox.tree(kFolder);
  _sandbox.remove(kFolder);

  ASSERT_EQ(0, make(more, narrow).status);

  EXPECT_EQ(first, _sandbox.tree(kFolder));
  EXPECT_EQ(0755U, _sandbox.mode(kFolder));
  EXPECT_EQ(0644U, _sandbox.mode(made("mac/deploy/.keystore.keys")));
  EXPECT_EQ(0644U, _sandbox.mode(made("mac/deploy/extras/a/file")));
  EXPECT_EQ(0755U, _sandbox.mode(made("mac/deploy/extras/program")));
}

TEST_F(NewCommandTest, AllFeaturesAreBroughtAndTakenAwayAgain) {
  writeFeature("other_feature_2.0.1");
  ASSERT_EQ(0, make({"--feature", "other_feature_2.0.1"}).status);

  const std::string feature = "<feature id=\"other_feature\" version=\"2.0.1\" ";
  EXPECT_THAT(contentOf("mac/deploy/install.hotfix.xml"), HasSubstr(feature));
  EXPECT_THAT(contentOf("mac/deploy/uninstall.hotfix.xml"), HasSubstr(feature));
}

TEST_F(NewCommandTest, TextsBecomeXmlWithoutLoss) {
  _sandbox.writeFile("/Users/alice/own/.keystore", "keys");
  ASSERT_EQ(0, control(argumentsWithout("--bundle", {"--bundle", "A & <B>"})).status);

  EXPECT_EQ("A & <B>",
            listAt(made("mac/Hotfix.pkg/Contents/Resources/hotfix.plist")).stringAt("bundleName"));
}

TEST_F(NewCommandTest, FlagsReachTheDescription) {
  ASSERT_EQ(0, make({"--registered", "--while-running", "--framework-path", "Contents/Other",
                     "--package", "P.pkg"})
                   .status);

  const std::string list = contentOf("mac/P.pkg/Contents/Resources/hotfix.plist");
  EXPECT_THAT(list, AllOf(HasSubstr("<key>allowMultiInstance</key>\n\t<false/>"),
                          HasSubstr("<key>SKIPRUNNINGCHECK</key>\n\t<string>true</string>"),
                          HasSubstr("<string>Contents/Other</string>")));
}

TEST_F(NewCommandTest, SeveralInstancesAreAllowedUnlessTheRegisteredOneIsMeant) {
  ASSERT_EQ(0, make().status);

  EXPECT_THAT(contentOf("mac/Hotfix.pkg/Contents/Resources/hotfix.plist"),
              AllOf(HasSubstr("<key>allowMultiInstance</key>\n\t<true/>"),
                    Not(HasSubstr("SKIPRUNNINGCHECK")), Not(HasSubstr("updateSiteList"))));
}

TEST_F(NewCommandTest, TheFlatLayoutNamesItsSite) {
  ASSERT_EQ(0, make({"--layout", "flat", "--site-folder", "sites/one"}).status);

  EXPECT_THAT(_sandbox.list(kFolder), ElementsAre("Hotfix.pkg", "deploy", "sites"));
  EXPECT_EQ("${package}/../sites/one",
            listAt(made("Hotfix.pkg/Contents/Resources/hotfix.plist")).stringAt("updateSiteList"));
  EXPECT_THAT(contentOf("deploy/install.hotfix.xml"),
              HasSubstr("url=\"${installer.root}/../sites/one\""));
  EXPECT_TRUE(_sandbox.isFolder(made("sites/one/features")));
}

TEST_F(NewCommandTest, AWithdrawalBringsNoFeatureAndNeedsNoSite) {
  proves("NEW-5");
  const RunResult result =
      control({"new", kFolder, "--version", "1.6", "--identifier", "com.quillmere.none",
               "--instance", _instance.bundle, "--withdraw"});

  EXPECT_EQ(0, result.status) << result.out << result.err;
  EXPECT_THAT(_sandbox.list(kFolder), ElementsAre("mac"));
  for (const char* name : {"mac/deploy/install.hotfix.xml", "mac/deploy/uninstall.hotfix.xml"})
    EXPECT_THAT(contentOf(name), AllOf(HasSubstr("<requirements>"), Not(HasSubstr("<feature "))));
  recordHotfix("1.5");
  _package.folder = made("mac/Hotfix.pkg");
  EXPECT_EQ(0, install().status);
  EXPECT_EQ("1.6", recorded("hotfixVersion"));
}

// --- Key stores ----------------------------------------------------------------------------------

TEST_F(NewCommandTest, KeyStoresOfTheInstanceAreKeptUnlessOthersComeInTheirPlace) {
  proves("NEW-6");
  _sandbox.writeFile(_instance.deploy(".keystore"), "old");
  _sandbox.writeFile(_instance.deploy(".KeyStore.Own"), "own", 0600);
  _sandbox.writeFile(_instance.deploy("keystore"), "none");
  _sandbox.writeFile("/Users/alice/own/.keystore", "new");

  ASSERT_EQ(
      0, make({"--keystore", "/Users/alice/own/.keystore", "--instance", _instance.bundle}).status);

  EXPECT_EQ("new", contentOf("mac/deploy/.keystore"));
  EXPECT_EQ("own", contentOf("mac/deploy/.KeyStore.Own"));
  EXPECT_EQ("keys", contentOf("mac/deploy/.keystore.keys"));
  EXPECT_FALSE(_sandbox.exists(made("mac/deploy/keystore")));
}

// Both cannot be in one folder everywhere; which of them is meant is not for us to say.
TEST_F(NewCommandTest, AKeyStoreOfAnotherLetterCaseIsNotTaken) {
  _sandbox.writeFile(_instance.deploy(".keystore"), "old");
  _sandbox.writeFile("/Users/alice/own/.KEYSTORE", "new");

  const RunResult result =
      make({"--keystore", "/Users/alice/own/.KEYSTORE", "--instance", _instance.bundle});

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out, HasSubstr("\".keystore\" of the instance would be removed"));
}

// The instance is its user's, and what a package holds everybody can read.
TEST_F(NewCommandTest, NothingButTheInstancesOwnFilesIsTakenForItsKeyStores) {
  proves("NEW-6");
  const std::string store = _instance.deploy(".keystore.own");
  const auto words = arguments({"--instance", _instance.bundle});
  _sandbox.writeFile("/Applications/guarded", "guarded", 0600);
  _sandbox.makeLink(store, "/Applications/guarded");
  expectRefusal(words, 2, "\"" + store + "\" cannot be read");

  _sandbox.remove(store);
  std::filesystem::create_hard_link(_sandbox.host("/Applications/guarded"), _sandbox.host(store));
  expectRefusal(words, 2, "\"" + store + "\" has other names");

  _sandbox.remove(store);
  _sandbox.writeFile(store, "");
  std::filesystem::resize_file(_sandbox.host(store), (std::uintmax_t{64} << 20) + 1);
  expectRefusal(words, 2, "\"" + store + "\" is longer than 67108864 bytes");

  _sandbox.remove(_instance.deploy(""));
  _sandbox.writeFile("/Applications/guarded-deploy/.keystore", "guarded");
  _sandbox.makeLink(_instance.home() + "/deploy", "/Applications/guarded-deploy");
  expectRefusal(words, 2, "\"" + _instance.deploy(".keystore") + "\" cannot be read");
}

TEST_F(NewCommandTest, TwoKeyStoresOfOneNameAreRefused) {
  _sandbox.writeFile("/Users/alice/own/.keystore.Keys", "other keys");
  expectRefusal(arguments({"--keystore", "/Users/alice/own/.keystore.Keys"}), 2,
                "two key stores would be \".keystore.Keys\"");
}

TEST_F(NewCommandTest, TheInstanceTellsTheBundle) {
  ASSERT_EQ(0,
            control(argumentsWithout("--bundle", {"--instance", _instance.bundle + "/"})).status);

  EXPECT_EQ("Quillmere",
            listAt(made("mac/Hotfix.pkg/Contents/Resources/hotfix.plist")).stringAt("bundleName"));
}

// --- What lint finds -----------------------------------------------------------------------------

TEST_F(NewCommandTest, WhatLintFindsKeepsAPackageFromBeingMade) {
  proves("NEW-2");
  const auto before = _sandbox.tree("/Users");

  const RunResult result = control(argumentsWithout("--version", {"--version", "1.10"}));

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out, HasSubstr(made("mac/Hotfix.pkg/Contents/Resources/hotfix.plist:")));
  EXPECT_THAT(result.out, AllOf(HasSubstr("[HF119]"), HasSubstr("[HF224]"),
                                Not(HasSubstr("/.hotfix-")), Not(HasSubstr("Package  "))));
  EXPECT_EQ(
      "hotfixctl: no package is made, because of what was found in it; --force makes it all "
      "the same\n",
      result.err);
  EXPECT_EQ(before, _sandbox.tree("/Users"));
}

TEST_F(NewCommandTest, ForceMakesItAllTheSame) {
  proves("NEW-2");
  std::vector<std::string> words = argumentsWithout("--version", {"--version", "1.10", "--force"});
  const RunResult result = control(words);

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, AllOf(HasSubstr("Package  "), HasSubstr("[HF119]")));
  EXPECT_TRUE(_sandbox.isFolder(made("mac/Hotfix.pkg")));
}

TEST_F(NewCommandTest, ForceMakesItWithoutKeyStores) {
  const RunResult result = control(argumentsWithout("--keystore", {"--force"}));

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, AllOf(HasSubstr("Key stores    none\n"), HasSubstr("[HF501]")));
}

TEST_F(NewCommandTest, ALossOfTheInstanceIsFound) {
  _sandbox.writeFile(_instance.home() + "/deploy/extras/a/file/inside", "folder");

  const RunResult result =
      make({"--instance", _instance.bundle, "--extras", "/Users/alice/own/extras"});

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out, HasSubstr("[HF609]"));
}

TEST_F(NewCommandTest, APathThatTheInstallerRefusesIsFound) {
  std::vector<std::string> words = arguments();
  words[1] = std::string(kAbove) + "/100%";

  const RunResult result = control(words);

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out, HasSubstr("100%/mac/Hotfix.pkg: error: The path is refused. [HF801]"));
  EXPECT_THAT(_sandbox.list(kAbove), IsEmpty());
}

// --- What cannot be made -------------------------------------------------------------------------

TEST_F(NewCommandTest, WhatIsNeededAndMissingIsNamed) {
  proves("NEW-7");
  expectRefusal({"new", kFolder}, 64,
                "new: --version, --bundle, --identifier, --feature, --site and --keystore are "
                "missing\n");
  expectRefusal(argumentsWithout("--site"), 64, "new: --site is missing\n");
  expectRefusal(argumentsWithout("--version", {"--version", ""}), 64, "--version is missing\n");
  expectRefusal({"new"}, 64, "folder is required");
}

// A variable of a script that was not set.
TEST_F(NewCommandTest, WhatIsEmptyIsNotGiven) {
  proves("NEW-7");
  expectRefusal(argumentsWithout("--site", {"--site", ""}), 64, "--site is missing");
  expectRefusal(argumentsWithout("--keystore", {"--instance", ""}), 64, "--keystore is missing");
  std::vector<std::string> words = arguments();
  words[1] = "";
  expectRefusal(words, 64, "the folder has no name");

  const RunResult result = make({"--instance", "", "--extras", "", "--customization", ""});

  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_FALSE(_sandbox.exists(made("mac/deploy/extras")));
  EXPECT_TRUE(_sandbox.exists(made("mac/Hotfix.pkg")));
}

TEST_F(NewCommandTest, AWithdrawalTakesAnEmptySiteForNone) {
  std::vector<std::string> words = argumentsWithout("--feature", {"--withdraw"});
  words[std::find(words.begin(), words.end(), "--site") - words.begin() + 1] = "";

  EXPECT_EQ(0, control(words).status);

  EXPECT_FALSE(_sandbox.exists(made("updates")));
}

TEST_F(NewCommandTest, WhereTheSiteIsElsewhereItsFolderDoesNotMatter) {
  EXPECT_EQ(0, make({"--package", "updates"}).status);
}

TEST_F(NewCommandTest, WhatCannotBeMeantIsNamed) {
  proves("NEW-7");
  expectRefusal(arguments({"--feature", "a/b"}), 64, "\"a/b\" is no feature");
  expectRefusal(arguments({"--feature", "_1.5"}), 64, "\"_1.5\" is no feature");
  expectRefusal(arguments({"--layout", "round"}), 64, "round");
  expectRefusal(arguments({"--package", "../P.pkg"}), 64, "\"../P.pkg\" cannot be a file's name");
  expectRefusal(arguments({"--package", ".."}), 64, "\"..\" cannot be a file's name");
  expectRefusal(arguments({"--package", "deploy"}), 64, "cannot be \"deploy\"");
  for (const char* folder : {"", "/a", "a/../..", "a//b", "a/"})
    expectRefusal(arguments({"--layout", "flat", "--site-folder", folder}), 64,
                  "cannot be a file's name");
  for (const char* folder : {"deploy", "deploy/site", "Hotfix.pkg", "a,b", "updates/a,b"})
    expectRefusal(arguments({"--layout", "flat", "--site-folder", folder}), 64,
                  "the update site cannot lie in");
  expectRefusal(argumentsWithout("--bundle", {"--bundle", "a/b"}), 64,
                "\"a/b\" cannot be a file's");
  expectRefusal(arguments({"--withdraw"}), 64, "brings no feature");
  expectRefusal(arguments({"--siet", "x"}), 64, "did you mean \"--site\"?");
}

TEST_F(NewCommandTest, WhatIsThereIsLeftAlone) {
  proves("NEW-8");
  _sandbox.writeFile(made("mine"), "mine");
  const std::string reason = "\"" + std::string(kFolder) + "\" is there already";
  expectRefusal(arguments(), 2, reason);

  _sandbox.remove(kFolder);
  _sandbox.writeFile(kFolder, "a file");
  expectRefusal(arguments(), 2, reason);

  _sandbox.remove(kFolder);
  _sandbox.makeLink(kFolder, "/Users/alice/elsewhere");
  expectRefusal(arguments(), 2, reason);
}

TEST_F(NewCommandTest, AnEmptyFolderIsFilled) {
  _sandbox.makeFolder(kFolder, 0700);

  EXPECT_EQ(0, make().status);

  EXPECT_THAT(_sandbox.list(kFolder), ElementsAre("mac", "updates"));
}

TEST_F(NewCommandTest, WhatCannotBeReadIsNamed) {
  proves("NEW-8");
  _sandbox.makePipe("/Users/alice/own/pipe");
  _sandbox.writeFile("/Users/alice/own/latin", "a=b\nc=\xFC\n");
  const std::string own = "/Users/alice/own/";
  expectRefusal(arguments({"--keystore", own + "pipe"}), 2, own + "pipe\" cannot be read");
  expectRefusal(arguments({"--keystore", own + "none"}), 2, own + "none\" cannot be read");
  expectRefusal(arguments({"--customization", own + "extras"}), 2, own + "extras\" cannot be read");
  expectRefusal(arguments({"--customization", own + "latin"}), 2,
                "line 2 of \"" + own + "latin\" is no UTF-8");
  expectRefusal(arguments({"--extras", own + "keys"}), 2, own + "keys\" cannot be copied");
  expectRefusal(arguments({"--extras", own + "none"}), 2, own + "none\" cannot be copied");
  expectRefusal(arguments({"--extras", own}), 2, "/Users/alice/own/pipe\" cannot be copied");
  expectRefusal(arguments({"--extras", "/Users"}), 2, "/Users\" cannot be copied");
  expectRefusal(arguments({"--instance", own + "none.app"}), 2, "there is no such application");
  expectRefusal(argumentsWithout("--identifier", {"--identifier", "1\x01"}), 2, "a character that");
}

TEST_F(NewCommandTest, AMissingFolderAboveIsNamed) {
  std::vector<std::string> words = arguments();
  words[1] = "/Users/alice/none/new";
  expectRefusal(words, 2, "\"/Users/alice/none/new\" cannot be made: No such file or directory");
}

TEST_F(NewCommandTest, AFullDiskLeavesNothing) {
  proves("NEW-8");
  _sandbox.limitEntries(kAbove, 9);
  const RunResult result = make();

  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.err, HasSubstr("No space left on device"));
  EXPECT_THAT(_sandbox.list(kAbove), IsEmpty());
}

// A process that is killed can tidy up nothing; the next one does.
TEST_F(NewCommandTest, WhatAKilledOneHasLeftGoesWithTheNext) {
  proves("NEW-8");
  RunOptions deadly;
  deadly.set("LD_PRELOAD", CliSandbox::kKillAtName).set("HOTFIX_KILL_AT_NAME", "new");
  // In a sanitized build the library is rightly loaded first.
  deadly.set("ASAN_OPTIONS", "verify_asan_link_order=0");
  EXPECT_EQ(128 + 9, make({}, deadly).status);
  ASSERT_THAT(_sandbox.list(kAbove), ElementsAre(StartsWith(".hotfix-")));

  EXPECT_EQ(0, make().status);

  EXPECT_THAT(_sandbox.list(kAbove), ElementsAre("new"));
}

TEST_F(NewCommandTest, AUserWithoutRightsIsToldSo) {
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  RunOptions bob;
  bob.user = CliSandbox::kBob;
  expectRefusal(arguments(), 2, "cannot be made: Permission denied", bob);
}

// --- For programs --------------------------------------------------------------------------------

TEST_F(NewCommandTest, TheSchemaKnowsTheWholeAnswer) {
  proves("CTL-6");
  const json refused = ctl::test::judged(
      control(argumentsWithout("--version", {"--version", "1.10", "--json"})).out, "new-1");
  EXPECT_EQ(false, refused["made"]);
  (void)ctl::test::judged(refused["lint"].dump(), "lint-1");

  const json answer = ctl::test::judged(make({"--json"}).out, "new-1");
  EXPECT_EQ(true, answer["made"]);
  EXPECT_EQ(made("mac/Hotfix.pkg"), answer["package"]);
  EXPECT_EQ(made("updates/platform"), answer["updateSite"]);
  EXPECT_EQ(json::array({".keystore.keys"}), answer["keyStores"]);
  EXPECT_EQ("com.quillmere.hotfix", answer["features"][0]["id"]);
  EXPECT_EQ("1.5", answer["features"][0]["version"]);

  _sandbox.remove(kFolder);
  const json withdrawal =
      ctl::test::judged(control({"new", kFolder, "--version", "1.6", "--identifier", "x",
                                 "--instance", _instance.bundle, "--withdraw", "--json"})
                            .out,
                        "new-1");
  EXPECT_EQ(nullptr, withdrawal["updateSite"]);
}

}  // namespace
}  // namespace installer::cli
