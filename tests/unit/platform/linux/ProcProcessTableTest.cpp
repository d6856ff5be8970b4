#include "platform/linux/ProcProcessTable.h"

#include <gmock/gmock.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "hotfix/platform/ProcessKeys.h"
#include "platform/posix/PosixChildProcesses.h"
#include "support/ChildFolder.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "support/Sandbox.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/linux/RefusedCall.h"

namespace installer::test {
namespace {

namespace fs = std::filesystem;

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr std::string_view kExecutable = processKey::kExecutable;
constexpr std::string_view kName = processKey::kName;

// --- The real table on running programs ----------------------------------------------------------

class RunningProgramTest : public ::testing::Test {
 protected:
  ~RunningProgramTest() override {
    _folder.makeFile("go", "");
    if (_child) (void)_children.wait(*_child);  // how it ends is not asked
  }

  // Runs a copy of the child program until the end of the test; returns when it is known to be up.
  std::string runCopy(const std::string& name) {
    const std::string copy = _folder.path(name);
    fs::copy_file(recordedChild(), copy);
    _played.script(fs::path(name).filename().string(),
                   ChildScript().write(_folder.path("up"), "").await(_folder.path("go")).text());
    _child = _children.start({copy, _arguments}, nullptr);
    while (_child && !std::filesystem::exists(_folder.path("up"))) sched_yield();
    return copy;
  }

  TemporaryFolder _folder;
  ChildFolder _played{_folder.path("played")};
  ScopedVariable _variable{ChildFolder::kVariable, _folder.path("played")};
  PosixChildProcesses _children;
  std::vector<std::string> _arguments;
  std::optional<int> _child;
  ProcProcessTable _table;
};

TEST_F(RunningProgramTest, IsListedByPathAndName) {
  proves("PROCESS-1");
  const std::string copy = runCopy("Quill mere");

  EXPECT_THAT(_table.valuesForKey(kExecutable), Contains(copy));
  EXPECT_THAT(_table.valuesForKey(kName), Contains("Quill mere"));
}

TEST_F(RunningProgramTest, KeepsItsPathWhenItsFileIsRemoved) {
  proves("PROCESS-4");
  const std::string copy = runCopy("Quillmere");

  fs::remove(copy);

  EXPECT_THAT(_table.valuesForKey(kExecutable), Contains(copy));
  EXPECT_THAT(_table.valuesForKey(kName), Contains("Quillmere"));
}

TEST_F(RunningProgramTest, KeepsItsPathWhenItsFileHasAnotherNameStill) {
  const std::string copy = runCopy("Quillmere");
  fs::create_hard_link(copy, _folder.path("spare"));

  fs::remove(copy);

  EXPECT_THAT(_table.valuesForKey(kExecutable), Contains(copy));
  EXPECT_THAT(_table.valuesForKey(kName), Contains("Quillmere"));
}

TEST_F(RunningProgramTest, KeepsItsPathWhenAnotherFileHasTheMarkedName) {
  const std::string copy = runCopy("Quillmere");
  _folder.makeFile("Quillmere (deleted)", "");

  fs::remove(copy);

  EXPECT_THAT(_table.valuesForKey(kExecutable), Contains(copy));
}

TEST_F(RunningProgramTest, KeepsANameThatLooksRemoved) {
  proves("PROCESS-4");
  const std::string copy = runCopy("Quillmere (deleted)");

  EXPECT_THAT(_table.valuesForKey(kExecutable), Contains(copy));
}

TEST_F(RunningProgramTest, LosesOneMarkOnlyWhenItLooksRemovedAndIs) {
  proves("PROCESS-4");
  const std::string copy = runCopy("Quillmere (deleted)");

  fs::remove(copy);

  EXPECT_THAT(_table.valuesForKey(kExecutable), Contains(copy));
}

TEST_F(RunningProgramTest, IsListedWithItsArguments) {
  _arguments = {"a b", "", "c"};
  const std::string copy = runCopy("Quillmere");

  EXPECT_THAT(_table.commandLines(geteuid()), Contains(ElementsAre(copy, "a b", "", "c")));
}

TEST_F(RunningProgramTest, IsReportedWithLinksResolved) {
  proves("PROCESS-2");
  const std::string copy = runCopy("program");
  _folder.makeLink("folder", _folder.path());

  EXPECT_EQ(_table.asReported(_folder.path("folder/./program")), copy);
  EXPECT_THAT(_table.valuesForKey(kExecutable), Contains(copy));
}

TEST_F(RunningProgramTest, IsReportedWithASlashAtTheEndWhereOneWasGiven) {
  _folder.makeFolder("B.app");
  _folder.makeLink("link", "B.app");

  EXPECT_EQ(_table.asReported(_folder.path() + "/B.app/"), _folder.path("B.app") + "/");
  EXPECT_EQ(_table.asReported(_folder.path() + "/link//"), _folder.path("B.app") + "/");
  EXPECT_EQ(_table.asReported(_folder.path() + "/link"), _folder.path("B.app"));
  EXPECT_EQ(_table.asReported("/"), "/");
  EXPECT_EQ(_table.asReported("/nowhere/at/all/"), "/nowhere/at/all/");
}

// --- A table of our own making -------------------------------------------------------------------

class MadeTableTest : public ::testing::Test {
 protected:
  void makeExecutable(const std::string& process) const {
    _folder.makeLink(process + "/exe", "/bin/sh");
  }

  auto cannotRead(const std::string& item, const std::string& why) const {
    return Says(LogLevel::error, "\"" + _folder.path(item) + "\" cannot be read: " + why);
  }

  TemporaryFolder _folder;
  ProcProcessTable _table{_folder.path()};
};

TEST_F(MadeTableTest, OnlyNumbersAreProcesses) {
  proves("PROCESS-1");
  _folder.makeLink("1/exe", "/sbin/init");
  _folder.makeLink("4711/exe", "/bin/sh");
  _folder.makeLink("self/exe", "/bin/self");
  _folder.makeLink("12a/exe", "/bin/mixed");
  _folder.makeLink("a12/exe", "/bin/mixed");
  _folder.makeLink("10:/exe", "/bin/mixed");
  _folder.makeLink("10./exe", "/bin/mixed");

  EXPECT_THAT(_table.valuesForKey(kExecutable), UnorderedElementsAre("/sbin/init", "/bin/sh"));
  EXPECT_THAT(_table.valuesForKey(kName), UnorderedElementsAre("init", "sh"));
}

TEST_F(MadeTableTest, ProcessesWithoutACommandLineAreLeftOut) {
  _folder.makeFile("1/cmdline", std::string("init\0--first\0", 13));
  _folder.makeFile("2/cmdline", "");
  _folder.makeFolder("3");
  _folder.makeFile("4/cmdline", "ended without a zero byte");
  _folder.makeFile("self/cmdline", std::string("self\0", 5));
  for (const char* process : {"1", "2", "3", "4", "self"}) makeExecutable(process);

  EXPECT_THAT(_table.commandLines(geteuid()),
              UnorderedElementsAre(ElementsAre("init", "--first"),
                                   ElementsAre("ended without a zero byte")));
}

TEST_F(MadeTableTest, TheKernelsOwnProcessesHaveNoCommandLine) {
  _folder.makeFile("1/cmdline", std::string("own\0", 4));

  EXPECT_THAT(_table.commandLines(geteuid()), IsEmpty());
}

TEST_F(MadeTableTest, CommandLineIsReadUpTo64KiB) {
  _folder.makeFile("1/cmdline", std::string(std::size_t{80} << 10, 'x'));
  makeExecutable("1");

  EXPECT_THAT(_table.commandLines(geteuid()),
              ElementsAre(ElementsAre(std::string(std::size_t{64} << 10, 'x'))));
}

TEST_F(MadeTableTest, CommandLinesOfOtherUsersAreLeftOut) {
  _folder.makeFile("1/cmdline", std::string("own\0", 4));
  _folder.makeFile("2/cmdline", std::string("other\0", 6));
  makeExecutable("1");
  makeExecutable("2");
  if (lchown(_folder.path("2").c_str(), 4711, 4711) != 0)
    GTEST_SKIP() << "only root can give files away";

  EXPECT_THAT(_table.commandLines(geteuid()), ElementsAre(ElementsAre("own")));
}

TEST_F(MadeTableTest, CommandLinesAreThoseOfTheUserThatIsAskedFor) {
  _folder.makeFile("1/cmdline", std::string("own\0", 4));
  _folder.makeFile("2/cmdline", std::string("other\0", 6));
  makeExecutable("1");
  makeExecutable("2");
  if (lchown(_folder.path("2").c_str(), 4711, 4711) != 0)
    GTEST_SKIP() << "only root can give files away";

  EXPECT_THAT(_table.commandLines(4711), ElementsAre(ElementsAre("other")));
}

TEST_F(MadeTableTest, ATableWithoutTheFirstProcessHidesSome) {
  makeExecutable("2");
  _folder.makeFolder("3");
  EXPECT_FALSE(_table.seesAll());

  makeExecutable("1");
  EXPECT_TRUE(_table.seesAll());
}

TEST_F(MadeTableTest, ATableWithClosedProcessesIsNotSeenWhole) {
  if (!canRefuseCalls()) GTEST_SKIP() << "this kernel cannot refuse calls";
  makeExecutable("1");

  for (const int error : {EACCES, EPERM})
    EXPECT_TRUE(inChild([&] {
      const Sandbox sandbox;
      return refuseCall(SYS_readlinkat, error) && !_table.seesAll() && sandbox.log().empty();
    })) << error;
}

TEST_F(MadeTableTest, EveryDigitMakesANumber) {
  _folder.makeLink("1234567890/exe", "/bin/sh");

  EXPECT_THAT(_table.valuesForKey(kExecutable), ElementsAre("/bin/sh"));
}

TEST_F(MadeTableTest, NamesAndPathsComeInTheSameOrder) {
  proves("PROCESS-1");
  for (const char* number : {"3", "20", "100"})
    _folder.makeLink(std::string(number) + "/exe", std::string("/bin/") + number);

  std::vector<std::string> names = _table.valuesForKey(kName);
  for (std::string& name : names) name.insert(0, "/bin/");
  EXPECT_EQ(_table.valuesForKey(kExecutable), names);
}

TEST_F(MadeTableTest, ProcessesWithoutExecutableAreLeftOut) {
  proves("PROCESS-1");
  _folder.makeFolder("2");
  _folder.makeFile("3/exe", "no link");
  _folder.makeLink("4/exe", "/bin/sh");

  EXPECT_THAT(_table.valuesForKey(kExecutable), ElementsAre("/bin/sh"));
}

TEST_F(MadeTableTest, AMarkStaysWhileTheFileHasALink) {
  proves("PROCESS-4");
  const std::string file = _folder.makeFile("program (deleted)", "");
  _folder.makeLink("5/exe", file);

  EXPECT_THAT(_table.valuesForKey(kExecutable), ElementsAre(file));
}

TEST_F(MadeTableTest, AMarkStaysWhenTheFileCannotBeAsked) {
  proves("PROCESS-4");
  _folder.makeLink("5/exe", "/nowhere (deleted)");

  EXPECT_THAT(_table.valuesForKey(kExecutable), ElementsAre("/nowhere (deleted)"));
}

TEST_F(MadeTableTest, AnExecutableWithoutFolderIsItsOwnName) {
  _folder.makeLink("5/exe", "p");

  EXPECT_THAT(_table.valuesForKey(kName), ElementsAre("p"));
}

TEST_F(MadeTableTest, NoTableHasNoProcessesAndSaysSo) {
  proves("PROCESS-8");
  const Sandbox sandbox;
  ProcProcessTable table(_folder.path("nowhere"));

  EXPECT_THAT(table.valuesForKey(kExecutable), IsEmpty());

  EXPECT_THAT(sandbox.log(), ElementsAre(cannotRead("nowhere", "No such file or directory")));
}

TEST_F(MadeTableTest, AnExecutableThatCannotBeReadIsTold) {
  proves("PROCESS-8");
  const Sandbox sandbox;
  _folder.makeFile("3/exe", "no link");
  _folder.makeLink("4/exe", "/bin/sh");

  EXPECT_THAT(_table.valuesForKey(kExecutable), ElementsAre("/bin/sh"));

  EXPECT_THAT(sandbox.log(), ElementsAre(cannotRead("3/exe", "Invalid argument")));
}

// A container can keep root from other users' processes.
TEST_F(MadeTableTest, TheFirstExecutableThatIsKeptFromRootIsTold) {
  proves("PROCESS-8");
  if (!canRefuseCalls()) GTEST_SKIP() << "this kernel cannot refuse calls";
  if (!isRoot()) GTEST_SKIP() << "others' processes are closed to ordinary users";
  for (const char* process : {"3", "4"}) makeExecutable(process);

  for (const int error : {EACCES, EPERM}) {
    EXPECT_TRUE(inChild([&] {
      const Sandbox sandbox;
      return refuseCall(SYS_readlinkat, error) && _table.valuesForKey(kExecutable).empty() &&
             sandbox.log().size() == 1 &&
             ::testing::Value(sandbox.log().front(),
                              AnyOf(cannotRead("3/exe", std::strerror(error)),
                                    cannotRead("4/exe", std::strerror(error))));
    })) << error;
  }
}

TEST_F(MadeTableTest, ExecutablesThatAreKeptFromAnOrdinaryUserAreNot) {
  proves("PROCESS-8");
  if (!canRefuseCalls()) GTEST_SKIP() << "this kernel cannot refuse calls";
  makeExecutable("3");

  EXPECT_TRUE(asOrdinaryUser([&] {
    const Sandbox sandbox;
    return refuseCall(SYS_readlinkat, EACCES) && _table.valuesForKey(kExecutable).empty() &&
           sandbox.log().empty();
  }));
}

TEST_F(MadeTableTest, ACommandLineThatCannotBeOpenedIsTold) {
  proves("PROCESS-8");
  const Sandbox sandbox;
  _folder.makeLink("3/exe", "/bin/sh");
  _folder.makeLink("3/cmdline", "cmdline");
  _folder.makeLink("4/exe", "/bin/sh");

  EXPECT_THAT(_table.commandLines(geteuid()), IsEmpty());

  EXPECT_THAT(sandbox.log(),
              ElementsAre(cannotRead("3/cmdline", "Too many levels of symbolic links")));
}

TEST_F(MadeTableTest, ACommandLineThatCannotBeReadIsTold) {
  proves("PROCESS-8");
  const Sandbox sandbox;
  makeExecutable("3");
  _folder.makeFolder("3/cmdline");

  EXPECT_THAT(_table.commandLines(geteuid()), IsEmpty());

  EXPECT_THAT(sandbox.log(), ElementsAre(cannotRead("3/cmdline", "Is a directory")));
}

TEST_F(MadeTableTest, AProcessThatHasEndedOrHasNoneIsNotTold) {
  proves("PROCESS-8");
  const Sandbox sandbox;
  _folder.makeFolder("3");

  EXPECT_THAT(_table.valuesForKey(kExecutable), IsEmpty());

  EXPECT_THAT(sandbox.log(), IsEmpty());
}

}  // namespace
}  // namespace installer::test
