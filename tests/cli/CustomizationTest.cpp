#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

// Customization, key stores and extras: what the hotfix brings into the instance.
class CustomizationTest : public InstallerTest {
 protected:
  void customize(const std::string& instance, const std::string& hotfix) {
    _sandbox.writeFile(_instance.customization(), instance);
    _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), hotfix);
  }
};

// --- Plug-in customization -----------------------------------------------------------------------

TEST_F(CustomizationTest, HotfixWinsAndTheRestStays) {
  proves("SETTINGS-2");
  customize("a=1\nb=2\n", "b=3\nc=4\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=3\nc=4\n", _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, CommentsBlankLinesAndDuplicatesAreLost) {
  proves("SETTINGS-2");
  customize("# old\n\nk=1\nk=2\n  # more\n", "# new\nj=3\n\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("k=2\nj=3\n", _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, MissingInstanceFileBecomesAByteCopy) {
  proves("SETTINGS-1");
  const std::string bytes = "# comment\n\nb = 3 \r\n\xE9=\xFF\nno line feed";
  _sandbox.remove(_instance.customization());
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), bytes);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(bytes, _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, MissingHotfixFileLeavesTheInstancesUntouched) {
  proves("SETTINGS-3");
  const std::string text = "# kept\na = 1\n";
  _sandbox.writeFile(_instance.customization(), text);
  _sandbox.remove(_package.deployFile("plugin_customization.ini"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(text, _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, EmptyHotfixFileStillRewritesTheInstances) {
  proves("SETTINGS-3");
  customize("# lost\na = 1\n", "");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("a=1\n", _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, EmptyFilesMergeToAnEmptyFile) {
  proves("SETTINGS-3");
  customize("", "");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("", _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, EscapesAreWrittenByTheDialect) {
  proves("SETTINGS-2");
  customize("p=c:\\dir\nu=\\u00e9\n", "a\\ b=x y\nl=\xE9\nt=a\tb\n");

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(sortedLines(*_sandbox.readFile(_instance.customization())),
              ElementsAre("a=b\\=x y", "l=\\u00e9", "p=c\\:\\\\dir", "t=a\\u0009b", "u=\\u00e9"));
}

TEST_F(CustomizationTest, FolderInThePlaceOfTheHotfixsFileLeavesTheEntries) {
  proves("SETTINGS-6");
  _sandbox.remove(_package.deployFile("plugin_customization.ini"));
  _sandbox.makeFolder(_package.deployFile("plugin_customization.ini"));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=2\n", _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, FolderInThePlaceOfTheInstancesFileIsSurvived) {
  proves("SETTINGS-6");
  _sandbox.remove(_instance.customization());
  _sandbox.writeFile(_instance.customization() + "/x", "x");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("x", _sandbox.readFile(_instance.customization() + "/x"));
}

TEST_F(CustomizationTest, LinkedSettingsInThePackageAreMerged) {
  proves("FILES-22");
  customize("a=1\nb=2\n", "");
  _sandbox.remove(_package.deployFile("plugin_customization.ini"));
  _sandbox.writeFile(_package.folder + "/Contents/real.ini", "b=3\n");
  _sandbox.makeLink(_package.deployFile("plugin_customization.ini"),
                    "../Fix.pkg/Contents/real.ini");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=3\n", _sandbox.readFile(_instance.customization()));
}

TEST_F(CustomizationTest, LinkedSettingsFromElsewhereAreNotPublished) {
  proves("FILES-22");
  customize("a=1\n", "");
  _sandbox.remove(_package.deployFile("plugin_customization.ini"));
  _sandbox.writeFile("/etc/secret", "password=1\n", 0600);
  _sandbox.makeLink(_package.deployFile("plugin_customization.ini"), "/etc/secret");

  EXPECT_EQ(0, install().status);
  EXPECT_EQ("a=1\n", _sandbox.readFile(_instance.customization()));

  _sandbox.remove(_instance.customization());
  EXPECT_EQ(0, install().status);
  EXPECT_FALSE(_sandbox.exists(_instance.customization()));
}

TEST_F(CustomizationTest, RewrittenFileKeepsOneName) {
  proves("FILES-4");
  ASSERT_EQ(0, install().status);

  for (const std::string& name : _sandbox.list(_instance.home()))
    EXPECT_THAT(name, Not(StartsWith(".")));
}

// --- Key stores ----------------------------------------------------------------------------------

class KeyStoreTest : public CustomizationTest {
 protected:
  void SetUp() override {
    CustomizationTest::SetUp();
    _package.set("keystore", "/keys");
    writePreferences();
    _sandbox.makeFolder("/keys");
  }

  // What the key store folder holds beside the manifests and the extras.
  std::vector<std::string> keyStores() const {
    std::vector<std::string> found;
    for (const std::string& name : _sandbox.list(_instance.deploy("")))
      if (name != "extras" && name.rfind("install.", 0) != 0 && name.rfind("uninstall.", 0) != 0)
        found.push_back(name);
    return found;
  }
};

TEST_F(KeyStoreTest, NamesCountByPrefixWithoutCase) {
  proves("KEYSTORE-1");
  for (const char* name : {".keystore", ".KEYSTORE.bak", ".KeyStore2", ".keystore_",
                           "client.keystore", "keystore", ".keystor", "x.keystore"})
    _sandbox.writeFile(std::string("/keys/") + name, std::string("new ") + name);

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(keyStores(), ElementsAre(".KEYSTORE.bak", ".KeyStore2", ".keystore", ".keystore_"));
  EXPECT_EQ("new .keystore", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_EQ("new .KEYSTORE.bak", _sandbox.readFile(_instance.deploy(".KEYSTORE.bak")));
}

TEST_F(KeyStoreTest, OldOnesGoEvenWhenNoNewOnesCome) {
  proves("KEYSTORE-2");
  _sandbox.writeFile(_instance.deploy(".KEYSTORE.old"), "x");
  _sandbox.writeFile(_instance.deploy("trust.keystore"), "kept");
  _sandbox.writeFile("/keys/client.keystore", "not taken");

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(keyStores(), ElementsAre("trust.keystore"));
}

TEST_F(KeyStoreTest, MissingSourceStillRemovesTheOldOnes) {
  proves("KEYSTORE-2");
  _sandbox.remove("/keys");

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(keyStores(), IsEmpty());
  EXPECT_THAT(_sandbox.texts(), Contains(".keystore source files are in /keys."));
}

TEST_F(KeyStoreTest, EveryDeletionAndCopyIsLoggedWithFullPaths) {
  proves("KEYSTORE-3");
  _sandbox.writeFile(_instance.deploy(".keystore.a"), "x");
  _sandbox.writeFile("/keys/.keystore.b", "y");

  ASSERT_EQ(0, install().status);

  std::vector<std::string> lines;
  for (const std::string& text : _sandbox.texts("Info"))
    if (text.find("eystore file") != std::string::npos && text != "Copy .keystore file.")
      lines.push_back(text);
  EXPECT_THAT(lines, ElementsAre("Delete existing keystore files '.keystore' from " +
                                     _instance.deploy(".keystore") + ".",
                                 "Delete existing keystore files '.keystore.a' from " +
                                     _instance.deploy(".keystore.a") + ".",
                                 "Copy keystore file '.keystore.b' from /keys/.keystore.b to " +
                                     _instance.deploy(".keystore.b") + "."));
}

TEST_F(KeyStoreTest, FoldersByThatNameAreRemovedAndCopiedWhole) {
  proves("KEYSTORE-4");
  _sandbox.writeFile(_instance.deploy(".keystore.d/old/x"), "x");
  _sandbox.writeFile("/keys/.keystore.d/new/y", "y");

  ASSERT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.deploy(".keystore.d/old")));
  EXPECT_EQ("y", _sandbox.readFile(_instance.deploy(".keystore.d/new/y")));
}

TEST_F(KeyStoreTest, LinksAreRemovedAsLinksAndCopiedAsLinks) {
  proves("KEYSTORE-4");
  _sandbox.writeFile("/Users/alice/precious/.keystore", "precious");
  _sandbox.remove(_instance.deploy(".keystore"));
  _sandbox.makeLink(_instance.deploy(".keystore"), "/Users/alice/precious");
  _sandbox.makeLink("/keys/.keystore", "elsewhere");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("precious", _sandbox.readFile("/Users/alice/precious/.keystore"));
  EXPECT_EQ("elsewhere", _sandbox.linkTarget(_instance.deploy(".keystore")));
}

TEST_F(KeyStoreTest, LinksToFilesInThePackageAreCopiedAsTheFiles) {
  proves("KEYSTORE-4");
  _sandbox.writeFile("/keys/real", "beside");
  _sandbox.makeLink("/keys/.keystore", "real");
  _sandbox.writeFile(_package.folder + "/Contents/real", "in the package");
  _sandbox.makeLink("/keys/.keystore2", _package.folder + "/Contents/real");
  _sandbox.writeFile("/etc/secret", "secret");
  _sandbox.makeLink("/keys/.keystore3", "/etc/secret");

  ASSERT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular(_instance.deploy(".keystore")));
  EXPECT_EQ("beside", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_TRUE(_sandbox.isRegular(_instance.deploy(".keystore2")));
  EXPECT_EQ("in the package", _sandbox.readFile(_instance.deploy(".keystore2")));
  EXPECT_EQ("/etc/secret", _sandbox.linkTarget(_instance.deploy(".keystore3")));
}

TEST_F(KeyStoreTest, PipesAreNotCopied) {
  proves("KEYSTORE-4");
  _sandbox.makePipe("/keys/.keystore");

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(keyStores(), IsEmpty());
}

TEST_F(KeyStoreTest, SourceThatIsAFileGivesNone) {
  proves("KEYSTORE-2");
  _sandbox.remove("/keys");
  _sandbox.writeFile("/keys", "x");

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(keyStores(), IsEmpty());
}

TEST_F(KeyStoreTest, SourceThatIsTheDeployFolderItselfLosesThem) {
  proves("KEYSTORE-2");
  _package.set("keystore", _instance.deploy(""));
  writePreferences();

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(keyStores(), IsEmpty());
}

// --- Extras --------------------------------------------------------------------------------------

class ExtrasTest : public CustomizationTest {
 protected:
  void SetUp() override {
    CustomizationTest::SetUp();
    _package.set("extras", "/extras");
    writePreferences();
  }

  std::string line() const {
    return "Begin to copy files from /extras to " + _instance.deploy("extras") + " ";
  }
};

TEST_F(ExtrasTest, AreCopiedWholeIntoAFreshInstance) {
  proves("EXTRAS-1");
  _sandbox.writeFile("/extras/a/x", "x", 0640);
  _sandbox.makeLink("/extras/l", "a/x");
  _sandbox.makeFolder("/extras/empty");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("x", _sandbox.readFile(_instance.deploy("extras/a/x")));
  EXPECT_EQ("a/x", _sandbox.linkTarget(_instance.deploy("extras/l")));
  EXPECT_TRUE(_sandbox.isFolder(_instance.deploy("extras/empty")));
  EXPECT_THAT(_sandbox.texts(), Contains(line()));
}

TEST_F(ExtrasTest, AreMergedIntoExistingOnes) {
  proves("EXTRAS-1");
  _sandbox.writeFile("/extras/a/x", "new x");
  _sandbox.writeFile("/extras/b", "new b");
  _sandbox.writeFile(_instance.deploy("extras/a/y"), "old y");
  _sandbox.writeFile(_instance.deploy("extras/b"), "old b");
  _sandbox.writeFile(_instance.deploy("extras/c"), "old c");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("new x", _sandbox.readFile(_instance.deploy("extras/a/x")));
  EXPECT_EQ("old y", _sandbox.readFile(_instance.deploy("extras/a/y")));
  EXPECT_EQ("new b", _sandbox.readFile(_instance.deploy("extras/b")));
  EXPECT_EQ("old c", _sandbox.readFile(_instance.deploy("extras/c")));
}

TEST_F(ExtrasTest, FileReplacesAFolderOfTheSameName) {
  proves("EXTRAS-1");
  _sandbox.writeFile("/extras/a", "now a file");
  _sandbox.writeFile(_instance.deploy("extras/a/deep/x"), "old");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("now a file", _sandbox.readFile(_instance.deploy("extras/a")));
}

TEST_F(ExtrasTest, LinkToAFolderIsMergedAsAFolder) {
  proves("EXTRAS-3");
  _sandbox.writeFile("/other/x", "linked x");
  _sandbox.makeFolder("/extras");
  _sandbox.makeLink("/extras/a", "/other");
  _sandbox.writeFile(_instance.deploy("extras/a/y"), "old y");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("linked x", _sandbox.readFile(_instance.deploy("extras/a/x")));
  EXPECT_EQ("old y", _sandbox.readFile(_instance.deploy("extras/a/y")));
}

TEST_F(ExtrasTest, DestinationLinkOutOfTheBundleIsReplacedNotFollowed) {
  proves("EXTRAS-4");
  _sandbox.writeFile("/Users/alice/precious/x", "precious");
  _sandbox.writeFile("/extras/a/x", "new");
  _sandbox.makeFolder(_instance.deploy("extras"));
  _sandbox.makeLink(_instance.deploy("extras/a"), "/Users/alice/precious");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("precious", _sandbox.readFile("/Users/alice/precious/x"));
  EXPECT_FALSE(_sandbox.isLink(_instance.deploy("extras/a")));
  EXPECT_EQ("new", _sandbox.readFile(_instance.deploy("extras/a/x")));
}

TEST_F(ExtrasTest, EmptyFolderIsPassedOverWithoutALine) {
  proves("EXTRAS-2");
  _sandbox.makeFolder("/extras");

  ASSERT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.deploy("extras")));
  EXPECT_THAT(_sandbox.texts(), Not(Contains(line())));
}

TEST_F(ExtrasTest, PlainFileIsPassedOverWithoutALine) {
  proves("EXTRAS-2");
  _sandbox.writeFile("/extras", "a file");

  ASSERT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.deploy("extras")));
  EXPECT_THAT(_sandbox.texts(), Not(Contains(line())));
}

TEST_F(ExtrasTest, MissingFolderIsPassedOverWithoutALine) {
  proves("EXTRAS-2");
  ASSERT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.deploy("extras")));
  EXPECT_THAT(_sandbox.texts(), Not(Contains(line())));
}

TEST_F(ExtrasTest, LinkToAFolderIsCopiedAsTheFolderWhereThereAreNone) {
  proves("EXTRAS-3");
  _sandbox.writeFile("/other/x", "x");
  _sandbox.makeLink("/extras", "/other");

  ASSERT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.isLink(_instance.deploy("extras")));
  EXPECT_EQ("x", _sandbox.readFile(_instance.deploy("extras/x")));
}

TEST_F(ExtrasTest, LinkToAFolderCountsAsTheSource) {
  proves("EXTRAS-3");
  _sandbox.writeFile("/other/x", "x");
  _sandbox.makeLink("/extras", "/other");
  _sandbox.makeFolder(_instance.deploy("extras"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("x", _sandbox.readFile(_instance.deploy("extras/x")));
}

TEST_F(ExtrasTest, PipeAmongThemIsNotOpened) {
  proves("EXTRAS-3");
  _sandbox.writeFile("/extras/a", "a");
  _sandbox.makePipe("/extras/p");
  _sandbox.makeFolder(_instance.deploy("extras"));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("a", _sandbox.readFile(_instance.deploy("extras/a")));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("extras/p")));
}

TEST_F(ExtrasTest, LoopOfLinksEnds) {
  proves("EXTRAS-3");
  _sandbox.makeFolder("/extras/a");
  _sandbox.makeLink("/extras/a/up", "..");
  _sandbox.writeFile("/extras/x", "x");
  _sandbox.makeFolder(_instance.deploy("extras/a/up/a"));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("x", _sandbox.readFile(_instance.deploy("extras/x")));
}

TEST_F(ExtrasTest, NamesThatAreNoUtf8AreCopied) {
  proves("EXTRAS-3");
  _sandbox.writeFile("/extras/\xFF\xFE", "bytes");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("bytes", _sandbox.readFile(_instance.deploy("extras/\xFF\xFE")));
}

// --- Permissions ---------------------------------------------------------------------------------

class PermissionsTest : public InstallerTest {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    _sandbox.writeFile(_instance.home() + "/deep/er/file", "x", 0600);
    _sandbox.setMode(_instance.home() + "/deep", 0700);
    _sandbox.writeFile(_instance.shared() + "/deep/file", "x", 0600);
    _sandbox.setMode(_instance.shared(), 0700);
    _sandbox.setMode(_instance.home(), 0701);
    _sandbox.writeFile("/Users/alice/ws/.config/x", "x", 0600);
    _sandbox.setMode("/Users/alice/ws", 0711);
  }

  void expectGiven(const std::string& path) const {
    EXPECT_EQ(0775u, _sandbox.mode(path)) << path;
    if (!CliSandbox::hasManyUsers()) return;
    EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(path).owner) << path;
    EXPECT_EQ(CliSandbox::kAdmin, _sandbox.ownership(path).group) << path;
  }
};

TEST_F(PermissionsTest, EverythingBelowHomeSharedAndDataIsGivenToTheUser) {
  proves("RIGHTS-1");
  ASSERT_EQ(0, installWithData("/Users/alice/ws").status);

  for (const std::string& path :
       {_instance.home() + "/deep", _instance.home() + "/deep/er",
        _instance.home() + "/deep/er/file", _instance.deploy("install.update.xml"),
        _instance.deploy(".keystore"), _instance.customization(), _instance.launcher(),
        _instance.shared() + "/deep", _instance.shared() + "/deep/file",
        std::string("/Users/alice/ws/.config"), std::string("/Users/alice/ws/.config/x")})
    expectGiven(path);
}

TEST_F(PermissionsTest, FoldersThemselvesKeepTheirs) {
  proves("RIGHTS-2");
  ASSERT_EQ(0, installWithData("/Users/alice/ws").status);

  EXPECT_EQ(0701u, _sandbox.mode(_instance.home()));
  EXPECT_EQ(0700u, _sandbox.mode(_instance.shared()));
  EXPECT_EQ(0711u, _sandbox.mode("/Users/alice/ws"));
  EXPECT_EQ(0u, _sandbox.ownership(_instance.home()).owner);
}

TEST_F(PermissionsTest, RestOfTheBundleIsNotTouched) {
  proves("RIGHTS-2");
  _sandbox.writeFile(_instance.bundle + "/Contents/MacOS/other", "x", 0600);

  ASSERT_EQ(0, installWithData("/Users/alice/ws").status);

  EXPECT_EQ(0600u, _sandbox.mode(_instance.bundle + "/Contents/MacOS/other"));
}

TEST_F(PermissionsTest, UnknownUserStillGetsTheModes) {
  proves("RIGHTS-4");
  RunOptions options;
  options.set("USER", "nobody-here");

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ(0775u, _sandbox.mode(_instance.home() + "/deep/er/file"));
  EXPECT_EQ(0u, _sandbox.ownership(_instance.home() + "/deep/er/file").owner);
}

TEST_F(PermissionsTest, WithoutUserTheProcessKeepsThem) {
  proves("RIGHTS-4");
  RunOptions options;
  options.unset("USER");

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ(0775u, _sandbox.mode(_instance.home() + "/deep/er/file"));
  EXPECT_EQ(0u, _sandbox.ownership(_instance.home() + "/deep/er/file").owner);
}

TEST_F(PermissionsTest, MissingAdminGroupIsReplacedByTheOwnersOwn) {
  proves("RIGHTS-5");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.writeUserDatabase(false);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(_instance.home() + "/deep").owner);
  EXPECT_EQ(1000u, _sandbox.ownership(_instance.home() + "/deep").group);
}

TEST_F(PermissionsTest, MaskDoesNotCount) {
  proves("RIGHTS-1");
  RunOptions options;
  options.mask = 077;

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ(0775u, _sandbox.mode(_instance.home() + "/deep"));
  EXPECT_EQ(0775u, _sandbox.mode(_instance.deploy("install.update.xml")));
}

TEST_F(PermissionsTest, LinksAreNotFollowed) {
  proves("RIGHTS-7");
  _sandbox.makeFolder("/Users/bob/precious", 0750);
  _sandbox.writeFile("/Users/bob/precious/x", "x", 0600);
  _sandbox.makeLink(_instance.home() + "/way", "/Users/bob/precious");
  _sandbox.makeLink(_instance.home() + "/way2", "/Users/bob/precious/x");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(0600u, _sandbox.mode("/Users/bob/precious/x"));
  EXPECT_EQ(0u, _sandbox.ownership("/Users/bob/precious/x").owner);
  EXPECT_EQ(0750u, _sandbox.mode("/Users/bob/precious"));
}

constexpr const char* kForeignLink =
    "The rcp data folder /data can not be entered, or only through another user's link: leave its "
    "files alone.";

TEST_F(PermissionsTest, DataAndSharedFolderThatAreLinksAreHandedOver) {
  proves("RIGHTS-9");
  _sandbox.makeLink("/data", "Users/alice/ws");
  _sandbox.remove(_instance.shared());
  _sandbox.writeFile("/opt/shared/deep/file", "x", 0600);
  _sandbox.makeLink(_instance.shared(), "/opt/shared");

  ASSERT_EQ(0, installWithData("/data").status);

  expectGiven("/Users/alice/ws/.config/x");
  expectGiven("/opt/shared/deep/file");
  EXPECT_EQ(0711u, _sandbox.mode("/Users/alice/ws"));
  EXPECT_EQ("Users/alice/ws", _sandbox.linkTarget("/data"));
  EXPECT_THAT(_sandbox.texts("Warning"), Not(Contains(kForeignLink)));
}

TEST_F(PermissionsTest, OwnDataFolderThatIsALinkIsHandedOverAgainAndAgain) {
  proves("RIGHTS-9");
  _sandbox.remove(_instance.data());
  _sandbox.makeLink(_instance.data(), "/Users/alice/ws");
  ASSERT_EQ(0, install().status);
  expectGiven("/Users/alice/ws/.config/x");
  _sandbox.writeFile("/Users/alice/ws/late", "x", 0600);

  ASSERT_EQ(0, install().status);

  expectGiven("/Users/alice/ws/late");
  EXPECT_THAT(_sandbox.texts("Warning"), Not(Contains(HasSubstr("another user's link"))));
}

TEST_F(PermissionsTest, AnotherUsersLinkToTheDataIsOneWarningAndKeepsItsFiles) {
  proves("RIGHTS-10");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.makeLink("/data", "way/ws");
  _sandbox.makeLink("/way", "/Users/alice");
  _sandbox.giveTo("/way", CliSandbox::kAlice, CliSandbox::kAlice);

  EXPECT_EQ(0, installWithData("/data").status);

  EXPECT_EQ(0600u, _sandbox.mode("/Users/alice/ws/.config/x"));
  EXPECT_EQ(0u, _sandbox.ownership("/Users/alice/ws/.config/x").owner);
  expectGiven(_instance.home() + "/deep/er/file");
  const auto warnings = _sandbox.texts("Warning");
  EXPECT_EQ(1, std::count(warnings.begin(), warnings.end(), kForeignLink));
  // The flag is asked through the link all the same.
  EXPECT_THAT(_sandbox.texts(), Not(Contains(HasSubstr("workspace flag file is missing"))));
}

TEST_F(PermissionsTest, AnotherUsersLinkToTheSharedFolderIsPassedOverWithoutALine) {
  proves("RIGHTS-10");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.remove(_instance.shared());
  _sandbox.writeFile("/opt/shared/file", "x", 0600);
  _sandbox.makeLink(_instance.shared(), "/opt/shared");
  _sandbox.giveTo(_instance.shared(), CliSandbox::kAlice, CliSandbox::kAlice);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ(0600u, _sandbox.mode("/opt/shared/file"));
  EXPECT_THAT(_sandbox.texts("Warning"), Not(Contains(HasSubstr("link"))));
}

TEST_F(PermissionsTest, FileWithAnotherNameElsewhereIsLeftAlone) {
  proves("RIGHTS-7");
  _sandbox.writeFile("/Users/bob/precious", "x", 0600);
  std::filesystem::create_hard_link(_sandbox.host("/Users/bob/precious"),
                                    _sandbox.host(_instance.home() + "/name"));

  ASSERT_EQ(0, install().status);

  if (CliSandbox::hasManyUsers()) {
    EXPECT_EQ(0600u, _sandbox.mode("/Users/bob/precious"));
    EXPECT_EQ(0u, _sandbox.ownership("/Users/bob/precious").owner);
  }
  EXPECT_EQ(0775u, _sandbox.mode(_instance.home() + "/deep/er/file"));
}

TEST_F(PermissionsTest, MissingSharedFolderIsPassedOver) {
  proves("RIGHTS-2");
  _sandbox.remove(_instance.shared());

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.shared()));
}

TEST_F(PermissionsTest, SetIdBitsAreDropped) {
  proves("RIGHTS-7");
  _sandbox.writeFile(_instance.home() + "/tool", "x", 06755);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(0775u, _sandbox.mode(_instance.home() + "/tool"));
}

TEST_F(PermissionsTest, RecordsWrittenAfterwardsKeepTheRestoredOnes) {
  proves("RIGHTS-8");
  writeInfo({{"version", ListValue::string("8.5.2")}});

  ASSERT_EQ(0, install().status);

  expectGiven(_instance.info());
}

TEST_F(PermissionsTest, FailurePathRestoresHomeSharedAndTheWorkspace) {
  proves("FAILURE-3");
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, installWithData("/Users/alice/ws").status);

  expectGiven(_instance.home() + "/deep/er/file");
  expectGiven(_instance.shared() + "/deep/file");
  expectGiven("/Users/alice/ws/.config/x");
}

TEST_F(PermissionsTest, FailurePathsGivenDataWinsOverTheLaunchersWorkspace) {
  proves("FAILURE-3");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.writeFile("/Users/alice/workspace/x", "x", 0600);

  ASSERT_EQ(1, installWithData("/Users/alice/ws").status);

  EXPECT_EQ(0600u, _sandbox.mode("/Users/alice/workspace/x"));
}

TEST_F(PermissionsTest, FailurePathRestoresAfterItsLaunches) {
  proves("FAILURE-3");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.script("rcplauncher", ChildScript().write(_instance.home() + "/late", "x"));

  ASSERT_EQ(1, install().status);

  expectGiven(_instance.home() + "/late");
}

}  // namespace
}  // namespace installer::cli
