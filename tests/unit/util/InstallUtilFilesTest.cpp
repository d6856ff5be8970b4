#include <gmock/gmock.h>

#include <filesystem>

#include "base/LetterCase.h"
#include "hotfix/util/InstallUtil.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InstallUtilFilesTest : public ::testing::Test {
 protected:
  // Brings "from" into an existing folder; a merge answers false, whatever it did.
  void mergeInto(const std::string& folder) const {
    EXPECT_FALSE(InstallUtil::copyFolderFrom(_sandbox.path("from"), folder));
  }

  Sandbox _sandbox;
};

TEST_F(InstallUtilFilesTest, AbsentOrMissingFoldersAreNotCopied) {
  proves("FILES-9");
  _sandbox.makeFolder("from");

  EXPECT_FALSE(InstallUtil::copyFolderFrom(std::nullopt, _sandbox.path("to")));
  EXPECT_FALSE(InstallUtil::copyFolderFrom(_sandbox.path("from"), std::nullopt));
  EXPECT_FALSE(InstallUtil::copyFolderFrom(_sandbox.path("missing"), _sandbox.path("to")));
  EXPECT_FALSE(_sandbox.exists("to"));
}

TEST_F(InstallUtilFilesTest, MissingDestinationBecomesACopyAndAnswersTrue) {
  proves("FILES-9");
  _sandbox.write("from/a/x", "1");
  _sandbox.makeLink("from/link", "a/x");

  EXPECT_TRUE(InstallUtil::copyFolderFrom(_sandbox.path("from"), _sandbox.path("to")));

  EXPECT_EQ(_sandbox.read("to/a/x"), "1");
  EXPECT_EQ(_sandbox.linkTarget("to/link"), "a/x");
}

TEST_F(InstallUtilFilesTest, LinkToAFolderIsCopiedAsTheFolder) {
  _sandbox.write("real/a", "1");
  _sandbox.makeLink("from", "real");

  EXPECT_TRUE(InstallUtil::copyFolderFrom(_sandbox.path("from"), _sandbox.path("to")));

  EXPECT_EQ(_sandbox.read("to/a"), "1");
  EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::symlink_status(_sandbox.path("to"))));
}

TEST_F(InstallUtilFilesTest, LinkToNothingIsNoSource) {
  _sandbox.makeLink("from", "nowhere");

  EXPECT_FALSE(InstallUtil::copyFolderFrom(_sandbox.path("from"), _sandbox.path("to")));

  EXPECT_FALSE(_sandbox.exists("to"));
}

TEST_F(InstallUtilFilesTest, LinkToNothingAtTheDestinationStaysAndCountsAsDone) {
  _sandbox.write("from/a", "1");
  _sandbox.makeLink("to", "nowhere");

  EXPECT_TRUE(InstallUtil::copyFolderFrom(_sandbox.path("from"), _sandbox.path("to")));

  EXPECT_EQ(_sandbox.linkTarget("to"), "nowhere");
}

TEST_F(InstallUtilFilesTest, FailedWholeCopyAnswersFalse) {
  proves("FILES-9");
  _sandbox.write("from/a", "1");

  EXPECT_FALSE(InstallUtil::copyFolderFrom(_sandbox.path("from"), _sandbox.path("no/folder/to")));
}

TEST_F(InstallUtilFilesTest, MergeReplacesAddsKeepsAndAnswersFalse) {
  proves("FILES-10");
  _sandbox.write("from/a/x", "new x");
  _sandbox.write("from/b", "new b");
  _sandbox.write("to/a/y", "old y");
  _sandbox.write("to/b", "old b");

  EXPECT_FALSE(InstallUtil::copyFolderFrom(_sandbox.path("from"), _sandbox.path("to")));

  EXPECT_EQ(_sandbox.read("to/b"), "new b");
  EXPECT_EQ(_sandbox.read("to/a/x"), "new x");
  EXPECT_EQ(_sandbox.read("to/a/y"), "old y");
}

TEST_F(InstallUtilFilesTest, MergeReplacesALinkThatLeadsOutOfTheApplication) {
  proves("FILES-12");
  _sandbox.write("from/sub/x", "new");
  _sandbox.makeFolder("outside");
  const std::string to = "Q.app/Contents/MacOS/rcp/extras";
  _sandbox.makeFolder(to);
  _sandbox.makeLink(to + "/sub", _sandbox.path("outside"));

  mergeInto(_sandbox.path(to));

  EXPECT_FALSE(_sandbox.exists("outside/x"));
  EXPECT_EQ(_sandbox.read(to + "/sub/x"), "new");
}

TEST_F(InstallUtilFilesTest, MergeFollowsALinkInsideTheApplication) {
  proves("FILES-12");
  _sandbox.write("from/sub/x", "new");
  _sandbox.makeFolder("Q.app/Contents/MacOS/inside");
  const std::string to = "Q.app/Contents/MacOS/rcp/extras";
  _sandbox.makeFolder(to);
  _sandbox.makeLink(to + "/sub", "../../inside");

  mergeInto(_sandbox.path(to));

  EXPECT_EQ(_sandbox.read("Q.app/Contents/MacOS/inside/x"), "new");
}

TEST_F(InstallUtilFilesTest, MergeOutsideOfApplicationsStaysInsideTheDestination) {
  _sandbox.write("from/sub/x", "new");
  _sandbox.makeFolder("outside");
  _sandbox.makeFolder("to");
  _sandbox.makeLink("to/sub", _sandbox.path("outside"));

  mergeInto(_sandbox.path("to"));

  EXPECT_FALSE(_sandbox.exists("outside/x"));
}

TEST_F(InstallUtilFilesTest, DestinationOutsideOfApplicationsThatIsItselfALinkIsReplaced) {
  proves("FILES-12");
  _sandbox.write("from/x", "new");
  _sandbox.makeFolder("outside");
  _sandbox.makeFolder("rcp/deploy");
  _sandbox.makeLink("rcp/deploy/extras", _sandbox.path("outside"));

  mergeInto(_sandbox.path("rcp/deploy/extras"));

  EXPECT_FALSE(_sandbox.exists("outside/x"));
  EXPECT_EQ(_sandbox.read("rcp/deploy/extras/x"), "new");
}

TEST_F(InstallUtilFilesTest, AttributesChangeBelowTheFolderOnly) {
  _sandbox.makeFolder("w", 0700);
  _sandbox.makeFolder("w/sub", 0700);
  _sandbox.write("w/sub/file", "x", 0600);

  EXPECT_TRUE(InstallUtil::changeAttributesForDirectory(_sandbox.path("w")));

  EXPECT_EQ(_sandbox.mode("w"), 0700U);
  EXPECT_EQ(_sandbox.mode("w/sub"), 0775U);
  EXPECT_EQ(_sandbox.mode("w/sub/file"), 0775U);
}

TEST_F(InstallUtilFilesTest, AttributesOfAnAbsentOrMissingFolderAreNotChanged) {
  _sandbox.makeLink("dangling", "missing");

  EXPECT_FALSE(InstallUtil::changeAttributesForDirectory(_sandbox.path("dangling")));
  EXPECT_FALSE(InstallUtil::changeAttributesForDirectory(std::nullopt));
  EXPECT_FALSE(InstallUtil::changeAttributesForDirectory(_sandbox.path("missing")));
}

TEST_F(InstallUtilFilesTest, UnknownUserFailsButModesAreSet) {
  proves("RIGHTS-4");
  _sandbox.users().variables["USER"] = "nobody-knows";
  _sandbox.write("w/file", "x", 0600);

  EXPECT_FALSE(InstallUtil::changeAttributesForDirectory(_sandbox.path("w")));

  EXPECT_EQ(_sandbox.mode("w/file"), 0775U);
}

TEST_F(InstallUtilFilesTest, ReceiptIsForgottenByTheSystemsTool) {
  proves("RECEIPT-2");
  const std::string tool = Platform::current().paths.receiptTool;
  _sandbox.write(tool, "");

  InstallUtil::removeReceipt("com.example.hotfix");

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{tool, {"--forget", "com.example.hotfix"}}));
  EXPECT_EQ(_sandbox.children().running(), 0U);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallUtilFilesTest, AbsentReceiptStartsNothing) {
  proves("RECEIPT-2");
  _sandbox.write(Platform::current().paths.receiptTool, "");

  InstallUtil::removeReceipt(std::nullopt);

  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(InstallUtilFilesTest, WithoutReceiptToolThereIsNothingToForget) {
  proves("RECEIPT-2");
  InstallUtil::removeReceipt("com.example.hotfix");

  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallUtilFilesTest, ReceiptToolThatCannotBeStartedIsLogged) {
  proves("RECEIPT-2");
  const std::string tool = Platform::current().paths.receiptTool;
  _sandbox.write(tool, "");
  _sandbox.children().failToStart(tool);

  InstallUtil::removeReceipt("com.example.hotfix");

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::error,
                               "Not able to start " + tool + ": No such file or directory.")));
}

TEST(PackageVariableTest, IsReplacedInEveryTextAndNothingElseIsExpanded) {
  PropertyList::Dictionary properties{{"a", "${package}/../deploy/x.xml"},
                                      {"b", "${package}:${package}"},
                                      {"c", "${Package} ~ $package"},
                                      {"d", 5},
                                      {"e", PropertyList::Array{"${package}"}}};

  InstallUtil::replacePackageVariableWith("/P/HF.pkg", properties);

  const PropertyList::Dictionary expected{{"a", "/P/HF.pkg/../deploy/x.xml"},
                                          {"b", "/P/HF.pkg:/P/HF.pkg"},
                                          {"c", "${Package} ~ $package"},
                                          {"d", 5},
                                          {"e", PropertyList::Array{"${package}"}}};
  EXPECT_EQ(properties, expected);
}

TEST(PackageVariableTest, PathIsPutInAsItStands) {
  proves("PACKAGE-8");
  PropertyList::Dictionary properties{{"a", "<${package}>"}};
  PropertyList::Dictionary nothing{{"a", "<${package}>"}};

  InstallUtil::replacePackageVariableWith("/P/${package}/", properties);
  InstallUtil::replacePackageVariableWith("", nothing);

  EXPECT_EQ(properties, (PropertyList::Dictionary{{"a", "</P/${package}/>"}}));
  EXPECT_EQ(nothing, (PropertyList::Dictionary{{"a", "<>"}}));
}

TEST(PackageVariableTest, AbsentPathChangesNothing) {
  proves("PACKAGE-8");
  PropertyList::Dictionary properties{{"a", "${package}"}};

  InstallUtil::replacePackageVariableWith(std::nullopt, properties);

  EXPECT_EQ(properties, (PropertyList::Dictionary{{"a", "${package}"}}));
}

TEST(PackageRootTest, ThreeComponentsAboveIsTheMetapackageAndOneMoreTheRoot) {
  proves("PATH-4");
  EXPECT_EQ(InstallUtil::getPathToMPKGThrough("X/Suite.mpkg/Contents/Packages/Part.pkg"),
            "X/Suite.mpkg");
  EXPECT_EQ(InstallUtil::getInstallerRootThrough("X/Suite.mpkg/Contents/Packages/Part.pkg"), "X");
  EXPECT_EQ(InstallUtil::getPathToMPKGThrough("/a"), "/");
  EXPECT_EQ(InstallUtil::getInstallerRootThrough("/a/../b/c/d"), "/a");
}

TEST(LetterCaseTest, LowersLettersAndKeepsForeignBytes) {
  proves("PATH-5");
  EXPECT_EQ(letterCase::lowered("AbÄ\xff\xc3Z"), "abä\xff\xc3z");
  EXPECT_EQ(letterCase::lowered(""), "");
  EXPECT_TRUE(letterCase::equalIgnoringCase("COM.Oracle", "com.oracle"));
  EXPECT_FALSE(letterCase::equalIgnoringCase("com.oracle", "com.oracle.java"));
}

TEST(LetterCaseTest, TextsAreComparedByFolding) {
  // The longest foldings, of one character each, are three.
  EXPECT_TRUE(letterCase::equalIgnoringCase("\uFB03", "FFI"));
  EXPECT_TRUE(letterCase::equalIgnoringCase("\u0390", "\u1FD3"));
  EXPECT_TRUE(letterCase::equalIgnoringCase("a\xFF\u03C2", "A\xFF\u03A3"));
  EXPECT_FALSE(letterCase::equalIgnoringCase("a\xFF", "a\xFE"));
  EXPECT_TRUE(letterCase::beginsIgnoringCase("a", ""));
}

}  // namespace
}  // namespace installer::test
