#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class EntryTest : public InstallerTest {
 protected:
  std::string lastArgument(const ChildRecord& child) const {
    return child.arguments.empty() ? std::string() : child.arguments.back();
  }
};

// --- Arguments -----------------------------------------------------------------------------------

class FewArgumentsTest : public InstallerTest,
                         public ::testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(FewArgumentsTest, AnswersUsageAndStatusOne) {
  proves("ARGS-2");
  const RunResult result = _sandbox.run(GetParam());

  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err, StartsWith("Usage: HotfixInstaller"));
  EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n'));
}

TEST_P(FewArgumentsTest, LeavesTraceAndResetRecordButTouchesNothingElse) {
  proves("ARGS-2");
  const auto before = _sandbox.tree("/Applications");

  (void)_sandbox.run(GetParam());  // what it leaves is looked at

  EXPECT_THAT(_sandbox.texts(), ElementsAre("Begin to install hotfix."));
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
  EXPECT_EQ(before, _sandbox.tree("/Applications"));
  EXPECT_THAT(_sandbox.children(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Counts, FewArgumentsTest,
                         ::testing::Values(std::vector<std::string>{},
                                           std::vector<std::string>{
                                               "/Volumes/HF/install/Fix.pkg"}));

TEST_F(EntryTest, RcpDataInPositionThreeSelectsPositionFour) {
  proves("ARGS-3");
  _sandbox.makeFolder("/Users/alice/ws/.config");

  ASSERT_EQ(0, installWithData("/Users/alice/ws").status);

  EXPECT_THAT(_sandbox.texts(), Contains("Caller specified rcpdata"));
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Caller didn't specify rcpdata, use rcp/systemdata")));
  for (const ChildRecord& child : _sandbox.children("rcplauncher"))
    EXPECT_EQ("/Users/alice/ws", lastArgument(child));
}

TEST_F(EntryTest, RcpDataIsTakenAsItStands) {
  proves("ARGS-3");
  _sandbox.makeFolder("/Users/alice/ws/.config");

  ASSERT_EQ(0, installWithData("/Users/alice//x/../ws/").status);

  for (const ChildRecord& child : _sandbox.children("rcplauncher"))
    EXPECT_EQ("/Users/alice//x/../ws/", lastArgument(child));
}

class MissingRcpDataTest : public InstallerTest,
                           public ::testing::WithParamInterface<const char*> {};

TEST_P(MissingRcpDataTest, IsTakenAsItStands) {
  proves("ARGS-3");

  EXPECT_EQ(0, installWithData(GetParam()).status);

  for (const ChildRecord& child : _sandbox.children("rcplauncher"))
    EXPECT_EQ(GetParam(), child.arguments.back());
}

INSTANTIATE_TEST_SUITE_P(Ends, MissingRcpDataTest,
                         ::testing::Values("/Users/alice/ws", "/Users/alice/ws/",
                                           "/Users/alice/ws/.", "/Users/alice/ws//././",
                                           "/Users/alice/ws/..", "/Users/alice/ws/x/../."));

TEST_F(EntryTest, MoreThanFourArgumentsStillSelectPositionFour) {
  proves("ARGS-3");
  const RunResult result = _sandbox.run(
      {_package.folder, _destination, "-rcpdata", "/Users/alice/ws", "-rcpdata", "/elsewhere"});

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(_sandbox.texts(), Contains("Caller specified rcpdata"));
  EXPECT_EQ("/Users/alice/ws", lastArgument(_sandbox.children("rcplauncher").at(0)));
}

class IgnoredRcpDataTest : public InstallerTest,
                           public ::testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(IgnoredRcpDataTest, UsesTheFolderBelowTheHome) {
  proves("ARGS-4");
  std::vector<std::string> arguments = {_package.folder, _destination};
  arguments.insert(arguments.end(), GetParam().begin(), GetParam().end());

  EXPECT_EQ(0, _sandbox.run(arguments).status);

  EXPECT_THAT(_sandbox.texts(), Contains("Caller didn't specify rcpdata, use rcp/systemdata"));
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Caller specified rcpdata")));
  for (const ChildRecord& child : _sandbox.children("rcplauncher"))
    EXPECT_EQ(_instance.data(), child.arguments.back());
}

INSTANTIATE_TEST_SUITE_P(
    Forms, IgnoredRcpDataTest,
    ::testing::Values(std::vector<std::string>{"-rcpdata"},
                      std::vector<std::string>{"-rcpData", "/Users/alice/ws"},
                      std::vector<std::string>{"-RCPDATA", "/Users/alice/ws"},
                      std::vector<std::string>{"--rcpdata", "/Users/alice/ws"},
                      std::vector<std::string>{"-rcpdata=/Users/alice/ws", "x"},
                      std::vector<std::string>{"-rcpdata ", "/Users/alice/ws"},
                      std::vector<std::string>{"", "/Users/alice/ws"},
                      std::vector<std::string>{"x", "-rcpdata", "/Users/alice/ws"}));

TEST_F(EntryTest, OptionBeforeThePackageIsNoOption) {
  proves("ARGS-1");
  const RunResult result = _sandbox.run({"-rcpdata", "/x", _package.folder, _destination});

  EXPECT_EQ(1, result.status);
  EXPECT_EQ((ErrorRecord{8, {"/x"}}), errorRecord());
}

// --- Package and bundle --------------------------------------------------------------------------

TEST_F(EntryTest, MissingListFailsWithTheDestinationAlone) {
  proves("PACKAGE-2");
  _sandbox.remove(_package.list());

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications"}}), errorRecord());
  EXPECT_THAT(_sandbox.texts(),
              Contains("Check whether the unsupported characters are contained."));
  EXPECT_THAT(_sandbox.texts(), Contains("Check whether the target platform is installed."));
  EXPECT_THAT(_sandbox.texts(), Not(Contains(HasSubstr("Check the target platform under"))));
}

TEST_F(EntryTest, MissingPackageFailsWithTheDestinationAlone) {
  proves("PACKAGE-2");
  _sandbox.remove(_package.folder);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications"}}), errorRecord());
}

TEST_F(EntryTest, MissingBundleNameFailsWithTheDestinationAlone) {
  proves("PACKAGE-2");
  _package.unset("bundleName");
  writePreferences();

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications"}}), errorRecord());
}

TEST_F(EntryTest, UnsupportedCharacterIsFoundThoughTheListIsMissing) {
  proves("PACKAGE-2");
  const RunResult result = _sandbox.run({"/no;where", "/Applications"});

  EXPECT_EQ(1, result.status);
  EXPECT_EQ((ErrorRecord{3, {}}), errorRecord());
}

TEST_F(EntryTest, MissingHomeFailsWithDestinationAndBundle) {
  proves("BUNDLE-1", "CHECK-4");
  _sandbox.remove(_instance.bundle);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
  EXPECT_THAT(_sandbox.texts(), Not(Contains(HasSubstr("Check the target platform under"))));
}

TEST_F(EntryTest, MissingHomeIsMadeByTheFailurePathsService) {
  proves("FAILURE-5");
  _sandbox.remove(_instance.bundle);

  EXPECT_EQ(1, install().status);

  EXPECT_TRUE(_sandbox.isFolder(_instance.home()));
}

TEST_F(EntryTest, HomeWithoutInstallManifestIsNoInstance) {
  proves("CHECK-4");
  _sandbox.remove(_instance.deploy("install.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
  EXPECT_THAT(_sandbox.texts(),
              Contains("Check the target platform under " + _instance.home() + "."));
}

TEST_F(EntryTest, FolderInPlaceOfTheInstallManifestCountsAsInstalled) {
  proves("CHECK-4");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.makeFolder(_instance.deploy("install.xml"));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(EntryTest, FrameworkPathIsTakenFromTheList) {
  proves("BUNDLE-2");
  _package.set("frameworkPath", "Contents/Frameworks/deep");
  writePreferences();

  EXPECT_EQ(1, install().status);

  EXPECT_TRUE(_sandbox.isFolder(_instance.bundle + "/Contents/Frameworks/deep/rcp"));
}

TEST_F(EntryTest, DestinationWithTrailingSlashIsToldAsGivenAndJoinedOnce) {
  proves("BUNDLE-8");
  _sandbox.remove(_instance.deploy("install.xml"));

  EXPECT_EQ(1, _sandbox.run({_package.folder, "/Applications/"}).status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications/", "Quillmere.app"}}), errorRecord());
  EXPECT_THAT(_sandbox.texts(),
              Contains("Check the target platform under " + _instance.home() + "."));
}

TEST_F(EntryTest, RelativePathsWork) {
  proves("ARGS-5");
  RunOptions options;
  options.directory = "/Volumes/HF";

  const RunResult result = _sandbox.run({"install/Fix.pkg", "../../Applications"}, options);

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

// --- Registered products -------------------------------------------------------------------------

class RegisteredTest : public InstallerTest {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    _package.set("allowMultiInstance", ListValue::boolean(false));
    writePreferences();
  }

  void registerPath(const std::string& path) {
    registerProduct("Quillmere",
                    ListValue::dictionary({{"pathToProduct", ListValue::string(path)}}));
  }

  void move(const std::string& to) {
    _sandbox.makeFolder(to.substr(0, to.rfind('/')));
    std::filesystem::rename(_sandbox.host(_instance.bundle), _sandbox.host(to));
    _instance.bundle = to;
    _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=0\n"));
  }
};

TEST_F(RegisteredTest, WithoutRegistrationTheDestinationHoldsTheBundle) {
  proves("BUNDLE-1");
  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(RegisteredTest, RegisteredBundleIsFoundElsewhere) {
  proves("BUNDLE-3");
  move("/opt/client/Quillmere.app");
  registerPath("/opt/client/Quillmere.app");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_FALSE(_sandbox.exists("/Applications/Quillmere.app"));
}

TEST_F(RegisteredTest, DestinationBecomesTheRegisteredBundlesFolder) {
  proves("BUNDLE-3");
  move("/opt/client/Quillmere.app");
  _sandbox.remove(_instance.deploy("install.xml"));
  registerPath("/opt/client/Quillmere.app");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/opt/client", "Quillmere.app"}}), errorRecord());
}

TEST_F(RegisteredTest, RegisteredPathThatDoesNotExistIsIgnored) {
  proves("BUNDLE-4");
  registerPath("/opt/gone/Quillmere.app");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(RegisteredTest, RegistrationOfAnotherProductIsIgnored) {
  proves("BUNDLE-4");
  _sandbox.makeFolder("/opt/other/Quillmere.app");
  registerProduct("Other", ListValue::dictionary(
                               {{"pathToProduct", ListValue::string("/opt/other/Quillmere.app")}}));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_THAT(_sandbox.list("/opt/other/Quillmere.app"), IsEmpty());
}

TEST_F(RegisteredTest, RegistrationWithoutProductPathIsIgnored) {
  proves("BUNDLE-4");
  registerProduct("Quillmere",
                  ListValue::dictionary({{"oldInstallLocation", ListValue::string("/opt/other")}}));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(RegisteredTest, ProductPathThatIsNoTextIsIgnored) {
  proves("BUNDLE-4");
  registerProduct("Quillmere", ListValue::dictionary({{"pathToProduct", ListValue::integer(7)}}));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(RegisteredTest, DamagedRegistrationIsIgnoredAndKept) {
  proves("BUNDLE-4");
  const std::string file = "/Library/Application Support/Velna/Quillmere/framework.plist";
  _sandbox.writeFile(file, "not a list");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("not a list", _sandbox.readFile(file));
  EXPECT_THAT(_sandbox.texts("Error"), ElementsAre(HasSubstr(file)));
}

TEST_F(RegisteredTest, BinaryRegistrationIsRead) {
  proves("BUNDLE-5");
  move("/opt/client/Quillmere.app");
  _sandbox.writeFile("/Library/Application Support/Velna/Quillmere/framework.plist",
                     binaryList(ListValue::dictionary(
                         {{"pathToProduct", ListValue::string("/opt/client/Quillmere.app")}})));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(RegisteredTest, OtherBundleNameMakesDriverAndWorkflowDisagree) {
  proves("BUNDLE-7");
  move("/opt/client/Other.app");
  registerPath("/opt/client/Other.app");

  const RunResult result = install();

  EXPECT_EQ(1, result.status);
  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
  EXPECT_THAT(_sandbox.texts(),
              Contains("Check the target platform under " + _instance.home() + "."));
  EXPECT_THAT(_sandbox.children("rcplauncher"), SizeIs(1)) << "the untouched instance's run";
}

TEST_F(RegisteredTest, WorkflowTakesTheBundleOfThatNameBesideTheRegisteredOne) {
  proves("BUNDLE-7");
  move("/opt/client/Other.app");
  registerPath("/opt/client/Other.app");
  Instance beside{"/opt/client/Quillmere.app"};
  buildInstance(beside);

  const RunResult result = install();

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("1.5", listAt(beside.info()).stringAt("hotfixVersion"));
  EXPECT_FALSE(_sandbox.exists(_instance.info()));
}

TEST_F(RegisteredTest, SeveralInstancesConsultNoRegistration) {
  proves("BUNDLE-6");
  _package.set("allowMultiInstance", ListValue::boolean(true));
  writePreferences();
  registerPath("/opt/client/Quillmere.app");
  _sandbox.makeFolder("/opt/client/Quillmere.app");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(RegisteredTest, RegisteredFileInPlaceOfABundleIsTaken) {
  proves("BUNDLE-5");
  _sandbox.writeFile("/opt/client/Quillmere.app", "a file");
  registerPath("/opt/client/Quillmere.app");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/opt/client", "Quillmere.app"}}), errorRecord());
  EXPECT_EQ("a file", _sandbox.readFile("/opt/client/Quillmere.app"));
}

// Which values of allowMultiInstance keep the registered bundle out.
struct Truth {
  const char* name;
  ListValue value;
  bool severalInstances;
};
void PrintTo(const Truth& truth, std::ostream* stream) {
  *stream << truth.name;
}

class TruthTest : public RegisteredTest, public ::testing::WithParamInterface<Truth> {};

TEST_P(TruthTest, DecidesWhetherTheRegistrationCounts) {
  proves("BUNDLE-6");
  _package.set("allowMultiInstance", GetParam().value);
  writePreferences();
  _sandbox.makeFolder("/opt/client/Quillmere.app");
  registerPath("/opt/client/Quillmere.app");

  const int status = install().status;

  if (GetParam().severalInstances) {
    EXPECT_EQ(0, status);
    EXPECT_EQ("1.5", recorded("hotfixVersion"));
  } else {
    EXPECT_EQ(1, status) << "the registered folder holds no instance";
    EXPECT_EQ((ErrorRecord{8, {"/opt/client", "Quillmere.app"}}), errorRecord());
    EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
  }
}

INSTANTIATE_TEST_SUITE_P(Values, TruthTest,
                         ::testing::Values(Truth{"True", ListValue::boolean(true), true},
                                           Truth{"False", ListValue::boolean(false), false},
                                           Truth{"One", ListValue::integer(1), true},
                                           Truth{"Zero", ListValue::integer(0), false},
                                           Truth{"Minus", ListValue::integer(-1), true},
                                           Truth{"Real", ListValue::other("real", "0.5"), true},
                                           Truth{"TextYes", ListValue::string("YES"), true},
                                           Truth{"TextTrue", ListValue::string("true"), true},
                                           Truth{"TextOne", ListValue::string("1"), true},
                                           Truth{"TextBlankYes", ListValue::string("  yes"), true},
                                           Truth{"TextZeroSeven", ListValue::string("+007"), true},
                                           Truth{"TextNo", ListValue::string("NO"), false},
                                           Truth{"TextFalse", ListValue::string("false"), false},
                                           Truth{"TextZero", ListValue::string("0"), false},
                                           Truth{"TextEmpty", ListValue::string(""), false},
                                           Truth{"Array", ListValue::array({}), false}),
                         CaseName());

TEST_F(RegisteredTest, MissingAllowMultiInstanceConsultsTheRegistration) {
  proves("BUNDLE-6");
  _package.unset("allowMultiInstance");
  writePreferences();
  move("/opt/client/Quillmere.app");
  registerPath("/opt/client/Quillmere.app");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

// --- The list's forms ----------------------------------------------------------------------------

TEST_F(EntryTest, BinaryListIsRead) {
  proves("PACKAGE-1");
  _sandbox.writeFile(_package.list(), binaryList(ListValue::dictionary(_package.preferences)));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(EntryTest, ListInLatinOneIsRead) {
  proves("PACKAGE-1");
  _sandbox.makeFolder("/Applications");
  _package.set("version", "1.5 \xE9");
  std::string text = xmlList(ListValue::dictionary(_package.preferences));
  text.replace(text.find("UTF-8"), 5, "ISO-8859-1");
  _sandbox.writeFile(_package.list(), text);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5 \xC3\xA9", recorded("hotfixVersion"));
}

TEST_F(EntryTest, ListInUtf16IsRead) {
  proves("PACKAGE-1");
  const std::string text = xmlList(ListValue::dictionary(_package.preferences));
  std::string wide = "\xFF\xFE";
  std::string declared = text;
  declared.replace(declared.find("UTF-8"), 5, "UTF-16");
  for (const char c : declared) wide += std::string(1, c) + '\0';
  _sandbox.writeFile(_package.list(), wide);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(EntryTest, ListWithByteOrderMarkIsRead) {
  proves("PACKAGE-1");
  _sandbox.writeFile(_package.list(),
                     "\xEF\xBB\xBF" + xmlList(ListValue::dictionary(_package.preferences)));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(EntryTest, NamesBeyondAsciiAreTaken) {
  proves("PACKAGE-1");
  const std::string name = "Qu\xC3\xAFllm\xC3\xA8re \xE2\x82\xAC";
  Instance other{"/Applications/" + name + ".app"};
  buildInstance(other);
  _package.set("bundleName", name);
  writePreferences();

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", listAt(other.info()).stringAt("hotfixVersion"));
}

// --- Trace file and checks -----------------------------------------------------------------------

TEST_F(EntryTest, ChecksStopAtTheFirstThatFails) {
  proves("CHECK-1");
  _sandbox.remove(_instance.deploy("install.xml"));
  recordHotfix("9");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(8, errorRecord().code);
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Check whether platform is running.")));
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Check the version of hotfix")));
}

TEST_F(EntryTest, FailingCheckStillRunsTheCollection) {
  proves("FAILURE-7");
  installJava();
  recordHotfix("9");

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.children("java"), SizeIs(1));
}

struct Character {
  const char* name;
  std::string path;
  bool refused;
};
void PrintTo(const Character& character, std::ostream* stream) {
  *stream << character.name;
}

const Character kCharacters[] = {
    {"Exclamation", "/Applications/a!b", true},  {"Quote", "/Applications/a\"b", true},
    {"Apostrophe", "/Applications/a'b", true},   {"Semicolon", "/Applications/My;Disk", true},
    {"Backslash", "/Applications/a\\b", true},   {"Number", "/Applications/a#b", true},
    {"Percent", "/Applications/a%b", true},      {"Bar", "/Applications/a|b", true},
    {"Equals", "/Applications/A=B", true},       {"Question", "/Applications/a?b", true},
    {"Colon", "/Applications/a:b/c", true},      {"FirstCharacter", "!/x", true},
    {"LastCharacter", "/Applications/x?", true}, {"Blank", "/Applications/a b", false},
    {"Dollar", "/Applications/a$b", false},      {"Ampersand", "/Applications/a&b", false},
    {"Asterisk", "/Applications/a*b", false},    {"Round", "/Applications/a(b)", false},
    {"Square", "/Applications/a[b]", false},     {"Curly", "/Applications/a{b}", false},
    {"Plus", "/Applications/a+b", false},        {"Comma", "/Applications/a,b", false},
    {"At", "/Applications/a@b", false},          {"Tilde", "/Applications/a~b", false},
    {"Caret", "/Applications/a^b", false},       {"Backquote", "/Applications/a`b", false},
    {"Less", "/Applications/a<b", false},        {"Greater", "/Applications/a>b", false},
    {"Dash", "/Applications/a-b_c.d", false},    {"Umlaut", "/Applications/\xC3\xBC", false}};

class CharacterTest : public InstallerTest, public ::testing::WithParamInterface<Character> {};

TEST_P(CharacterTest, InTheDestinationIsJudged) {
  proves("CHECK-2");
  const Instance instance{GetParam().path + "/Quillmere.app"};
  if (!GetParam().refused) buildInstance(instance);

  const RunResult result = _sandbox.run({_package.folder, GetParam().path});

  EXPECT_EQ(GetParam().refused ? 1 : 0, result.status);
  EXPECT_EQ((ErrorRecord{GetParam().refused ? 3 : 0, {}}), errorRecord());
}

TEST_P(CharacterTest, InThePackagePathIsJudged) {
  proves("CHECK-2");
  Package package = _package;
  package.folder = GetParam().path + "/deep/Fix.pkg";
  if (GetParam().path[0] == '/') buildPackage(package);

  const RunResult result = _sandbox.run({package.folder, "/Applications"});

  EXPECT_EQ(GetParam().refused ? 1 : 0, result.status);
  EXPECT_EQ((ErrorRecord{GetParam().refused ? 3 : 0, {}}), errorRecord());
}

INSTANTIATE_TEST_SUITE_P(Characters, CharacterTest, ::testing::ValuesIn(kCharacters), CaseName());

TEST_F(RegisteredTest, CharactersOfTheRegisteredFolderAreJudged) {
  proves("CHECK-3");
  move("/opt/a;b/Quillmere.app");
  registerPath("/opt/a;b/Quillmere.app");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{3, {}}), errorRecord());
}

TEST_F(RegisteredTest, CharactersOfTheGivenDestinationDoNotCountForARegisteredBundle) {
  proves("CHECK-3");
  move("/opt/client/Quillmere.app");
  registerPath("/opt/client/Quillmere.app");

  EXPECT_EQ(0, _sandbox.run({_package.folder, "/no;where"}).status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(EntryTest, CharactersOfBundleAndDataDoNotCount) {
  proves("CHECK-3");
  Instance odd{"/Applications/a=b.app"};
  buildInstance(odd);
  _package.set("bundleName", "a=b");
  writePreferences();

  EXPECT_EQ(0, installWithData("/Users/alice/x;y").status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_EQ("1.5", listAt(odd.info()).stringAt("hotfixVersion"));
}

TEST_F(EntryTest, EmptyDestinationIsNotRefusedForItsCharacters) {
  proves("CHECK-3");
  EXPECT_EQ(1, _sandbox.run({_package.folder, ""}).status);

  EXPECT_EQ((ErrorRecord{8, {"", "Quillmere.app"}}), errorRecord());
}

TEST_F(EntryTest, EmptyPackageIsNoPackageEvenInsideOne) {
  proves("ARGS-1");
  RunOptions options;
  options.directory = _package.folder;

  EXPECT_EQ(1, _sandbox.run({"", "/Applications"}, options).status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications"}}), errorRecord());
}

TEST_F(EntryTest, EmptyPackageIsNoPackage) {
  proves("ARGS-1");
  EXPECT_EQ(1, _sandbox.run({"", "/Applications"}).status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications"}}), errorRecord());
}

}  // namespace
}  // namespace installer::cli
