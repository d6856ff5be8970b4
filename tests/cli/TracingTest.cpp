#include <gmock/gmock.h>

#include <algorithm>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* kPreferences =
    "/Users/alice/Library/Preferences/com.kiv.rcp.install.mac.plist";

// The trace file and the running check's queries.
class TracingTest : public InstallerTest {
 protected:
  std::string processLine(const std::string& executable) const {
    return ">>>> current is " + executable + ".";
  }
};

TEST_F(TracingTest, NewTraceFileHasItsModeWhateverTheMask) {
  proves("LOG-6");
  ASSERT_EQ(0, install().status);
  EXPECT_EQ(0644u, _sandbox.mode(kTrace));
}

TEST_F(TracingTest, SecondRunStartsAnEmptyFile) {
  proves("LOG-6");
  ASSERT_EQ(0, install().status);
  const std::size_t first = _sandbox.trace().size();
  ASSERT_GT(first, 0u);

  ASSERT_EQ(1, _sandbox.run({"/no/package", "/Applications"}).status);

  const auto texts = _sandbox.texts();
  EXPECT_EQ("Begin to install hotfix.", texts.at(0));
  EXPECT_EQ(1, std::count(texts.begin(), texts.end(), "Begin to install hotfix."));
}

TEST_F(TracingTest, LongerOldTextIsGone) {
  proves("LOG-6");
  _sandbox.writeFile(kTrace, std::string(1 << 20, 'x'));

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(*_sandbox.readFile(kTrace), Not(HasSubstr("xxxx")));
}

TEST_F(TracingTest, EveryLineEndsInALineFeed) {
  proves("LOG-3");
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(*_sandbox.readFile(kTrace), EndsWith("\n"));
  EXPECT_THAT(*_sandbox.readFile(kTrace), Not(HasSubstr("\n\n")));
}

class TracePreferenceTest : public InstallerTest,
                            public ::testing::WithParamInterface<std::string> {};

TEST_P(TracePreferenceTest, CannotSwitchTracingOff) {
  proves("LOG-5");
  _sandbox.writeFile(kPreferences, GetParam());

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Begin to install hotfix."));
}

INSTANTIATE_TEST_SUITE_P(
    Lists, TracePreferenceTest,
    ::testing::Values(xmlList(ListValue::dictionary({{"com.kiv.rcp.install.mac.traceEnable",
                                                      ListValue::boolean(false)}})),
                      xmlList(ListValue::dictionary({{"com.kiv.rcp.install.mac.traceEnable",
                                                      ListValue::string("NO")}})),
                      xmlList(ListValue::dictionary({{"com.kiv.rcp.install.mac.traceEnable",
                                                      ListValue::boolean(true)}})),
                      std::string("damaged"), std::string()));

TEST_F(TracingTest, TraceFileThatCannotBeMadeIsDoneWithout) {
  proves("LOG-8");
  _sandbox.makeFolder(std::string(kTrace) + "/x");

  const RunResult result = install();

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_THAT(_sandbox.list(kTrace), ::testing::ElementsAre("x"));
}

TEST_F(TracingTest, LineBreakInAPathIsShownEscapedOnOneLine) {
  proves("LOG-3");
  ASSERT_EQ(1, _sandbox.run({"/no\nPackage\t", "/Applications"}).status);

  // Every line of the file parses, and none is cut short.
  EXPECT_THAT(_sandbox.texts(), Not(Contains(StartsWith("Package"))));
  EXPECT_THAT(*_sandbox.readFile(kTrace), Not(HasSubstr("\t")));
}

TEST_F(TracingTest, WorkspaceLineIsFollowedByNoEmptyOne) {
  ASSERT_EQ(0, install().status);

  const auto texts = _sandbox.texts();
  const auto found = std::find(texts.begin(), texts.end(), "workspace is " + _instance.data());
  ASSERT_NE(texts.end(), found);
  EXPECT_THAT(*(found + 1), StartsWith("The pathToRcphome is: "));
}

// --- Running -------------------------------------------------------------------------------------

TEST_F(TracingTest, EveryProcessWithAnExecutableIsListed) {
  _sandbox.copyChildProgram("/opt/one");
  _sandbox.copyChildProgram("/opt/Two words");
  RunOptions options;
  options.background = {{"/opt/one", "--idle"}, {"/opt/Two words", "--idle"}};

  ASSERT_EQ(0, install(options).status);

  const auto texts = _sandbox.texts();
  EXPECT_THAT(texts, Contains(processLine("/opt/one")));
  EXPECT_THAT(texts, Contains(processLine("/opt/Two words")));
  EXPECT_THAT(texts, Contains(processLine(CliSandbox::kProgram)));
}

struct Running {
  const char* name;
  std::string program;
  bool counts;
};
void PrintTo(const Running& running, std::ostream* stream) {
  *stream << running.name;
}

class RunningTest : public TracingTest, public ::testing::WithParamInterface<Running> {};

TEST_P(RunningTest, IsToldByThePathsBeginningWithoutCase) {
  proves("CHECK-6");
  _sandbox.copyChildProgram(GetParam().program);
  RunOptions options;
  options.background = {{GetParam().program, "--idle"}};

  const RunResult result = install(options);

  EXPECT_EQ(GetParam().counts ? 1 : 0, result.status);
  EXPECT_EQ(GetParam().counts ? 6 : 0, errorRecord().code);
  EXPECT_THAT(_sandbox.texts(), Contains(processLine(GetParam().program)));
}

INSTANTIATE_TEST_SUITE_P(
    Programs, RunningTest,
    ::testing::Values(Running{"Main", "/Applications/Quillmere.app/Contents/MacOS/Quillmere", true},
                      Running{"Deep", "/Applications/Quillmere.app/a/b/c/d", true},
                      Running{"OtherCase", "/applications/QUILLMERE.APP/Contents/x", true},
                      Running{"LongerName", "/Applications/Quillmere.app2/Contents/MacOS/x", true},
                      Running{"ShorterName", "/Applications/Quillmere.ap/x", false},
                      Running{"Elsewhere", "/opt/Applications/Quillmere.app/x", false},
                      Running{"SameName", "/opt/Quillmere", false}),
    CaseName());

TEST_F(TracingTest, ListingStopsAtTheFirstMatch) {
  proves("CHECK-8");
  _sandbox.copyChildProgram(_instance.bundle + "/Contents/MacOS/Quillmere");
  RunOptions options;
  options.background = {{_instance.bundle + "/Contents/MacOS/Quillmere", "--idle"}};

  ASSERT_EQ(1, install(options).status);

  std::vector<std::string> listed;
  for (const std::string& text : _sandbox.texts())
    if (text.rfind(">>>> ", 0) == 0) listed.push_back(text);
  ASSERT_FALSE(listed.empty());
  EXPECT_EQ(processLine(_instance.bundle + "/Contents/MacOS/Quillmere"), listed.back());
}

TEST_F(TracingTest, ProgramThroughALinkIsFoundByItsOwnPath) {
  proves("CHECK-7");
  _sandbox.copyChildProgram(_instance.bundle + "/Contents/MacOS/Quillmere");
  _sandbox.makeLink("/opt/start", _instance.bundle + "/Contents/MacOS/Quillmere");
  RunOptions options;
  options.background = {{"/opt/start", "--idle"}};

  EXPECT_EQ(1, install(options).status);

  EXPECT_EQ((ErrorRecord{6, {"Quillmere"}}), errorRecord());
}

TEST_F(TracingTest, DestinationThroughALinkFindsTheRunningProgram) {
  proves("CHECK-7");
  _sandbox.copyChildProgram(_instance.bundle + "/Contents/MacOS/Quillmere");
  _sandbox.makeLink("/apps", "/Applications");
  RunOptions options;
  options.background = {{_instance.bundle + "/Contents/MacOS/Quillmere", "--idle"}};

  EXPECT_EQ(1, _sandbox.run({_package.folder, "/apps"}, options).status);
  EXPECT_EQ(6, errorRecord().code);
}

TEST_F(TracingTest, RegisteredBundleIsTheOneThatMustNotRun) {
  _package.set("allowMultiInstance", ListValue::boolean(false));
  writePreferences();
  Instance registered{"/opt/client/Quillmere.app"};
  buildInstance(registered);
  registerProduct("Quillmere",
                  ListValue::dictionary({{"pathToProduct", ListValue::string(registered.bundle)}}));
  _sandbox.copyChildProgram(registered.bundle + "/Contents/MacOS/Quillmere");
  RunOptions options;
  options.background = {{registered.bundle + "/Contents/MacOS/Quillmere", "--idle"}};

  EXPECT_EQ(1, install(options).status);

  EXPECT_EQ((ErrorRecord{6, {"Quillmere"}}), errorRecord());
  EXPECT_THAT(_sandbox.texts(), Contains("The target platform Quillmere is running."));
}

TEST_F(TracingTest, SlashBehindTheRegisteredBundleEndsItsName) {
  _package.set("allowMultiInstance", ListValue::boolean(false));
  writePreferences();
  registerProduct("Quillmere", ListValue::dictionary(
                                   {{"pathToProduct", ListValue::string(_instance.bundle + "/")}}));
  const std::string other = _instance.bundle + "2/Contents/MacOS/x";
  _sandbox.copyChildProgram(other);
  RunOptions options;
  options.background = {{other, "--idle"}};

  EXPECT_EQ(0, install(options).status);

  EXPECT_THAT(_sandbox.texts(), Contains(processLine(other)));
}

}  // namespace
}  // namespace installer::cli
