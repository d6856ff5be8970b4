#include <gmock/gmock.h>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr const char* kPreferences =
    "/Users/alice/Library/Preferences/com.kiv.rcp.install.mac.plist";
constexpr const char* kUnusualPreferences = "\xEF\xBB\xBF<plist><dict/></plist>";

// Runs on a machine on which the XML library cannot be loaded.
class XmlLibraryTest : public InstallerTest {
 protected:
  RunResult installWithoutLibrary() {
    _sandbox.writeFile(std::string("/broken/") + HOTFIX_XML_LIBRARY, "nothing");
    RunOptions options;
    options.set("LD_LIBRARY_PATH", "/broken");
    return install(options);
  }
};

TEST_F(XmlLibraryTest, IsNotNeededForDocumentsOfTheUsualKind) {
  proves("XML-1");
  recordHotfix("1.4");

  EXPECT_EQ(0, installWithoutLibrary().status);

  EXPECT_THAT(_sandbox.readFile(_instance.deploy("install.update.xml")).value(),
              HasSubstr("url=\"file:" + _package.folder + "/updates\""));
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(XmlLibraryTest, RunEndsWhenItIsNeededAndCannotBeLoaded) {
  proves("XML-2");
  const std::string list = _sandbox.readFile(_package.list()).value();
  _sandbox.writeFile(_package.list(), "\xEF\xBB\xBF" + list);  // a byte order mark is unusual

  const RunResult result = installWithoutLibrary();

  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_EQ("Error", _sandbox.trace().back().level);
  EXPECT_THAT(_sandbox.trace().back().text,
              AllOf(HasSubstr(HOTFIX_XML_LIBRARY), EndsWith(". The installation ends here.")));
  EXPECT_THAT(_sandbox.children("rcplauncher"), IsEmpty());
  EXPECT_EQ(0, install().status);  // with the library
}

// Whether the trace is wanted is asked in the end, too.
TEST_F(XmlLibraryTest, PreferencesThatNeedItInTheEndEndNothing) {
  proves("XML-2");
  _sandbox.writeFile(kPreferences, "<plist><dict/></plist>");
  _sandbox.script(
      "rcplauncher",
      ChildScript().write(_instance.result(), "rc=0\n").write(kPreferences, kUnusualPreferences));

  EXPECT_EQ(0, installWithoutLibrary().status);
}

TEST_F(XmlLibraryTest, LackIsToldOnStandardErrorBeforeThereIsATrace) {
  proves("XML-2");
  _sandbox.writeFile(kPreferences, kUnusualPreferences);

  const RunResult result = installWithoutLibrary();

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.err, AllOf(StartsWith("HotfixInstaller: "), HasSubstr(HOTFIX_XML_LIBRARY)));
}

}  // namespace
}  // namespace installer::cli
