#include "platform/posix/PosixChildProcesses.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "support/ChildFolder.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "support/ScopedDescriptor.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;

std::size_t countOpenDescriptors() {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator("/dev/fd"), {}));
}

// A signal of this process, handled otherwise for a while.
class ScopedAction {
 public:
  ScopedAction(int signal, void (*handler)(int)) : _signal(signal) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(signal, &action, &_previous);
  }
  ScopedAction(const ScopedAction&) = delete;
  ScopedAction& operator=(const ScopedAction&) = delete;
  ~ScopedAction() { sigaction(_signal, &_previous, nullptr); }

 private:
  const int _signal;
  struct sigaction _previous {};
};

using Resource = decltype(RLIMIT_NOFILE);

class ScopedLimit {
 public:
  ScopedLimit(Resource resource, rlim_t limit) : _resource(resource) {
    getrlimit(resource, &_previous);
    const rlimit lowered{limit, _previous.rlim_max};
    setrlimit(resource, &lowered);
  }
  ScopedLimit(const ScopedLimit&) = delete;
  ScopedLimit& operator=(const ScopedLimit&) = delete;
  ~ScopedLimit() { setrlimit(_resource, &_previous); }

 private:
  const Resource _resource;
  rlimit _previous{};
};

std::vector<int> takeAllDescriptors() {
  std::vector<int> taken;
  for (int next; (next = open("/dev/null", O_RDONLY)) >= 0;) taken.push_back(next);
  return taken;
}

void passOver(int) {}

class PosixChildProcessesTest : public ::testing::Test {
 protected:
  // What each child does, in the child's own words: see children/RecordedChild.cpp.
  void script(const std::string& lines) { _played.script("RecordedChild", lines); }

  Command playedChild(std::vector<std::string> arguments = {}) {
    return {recordedChild(), std::move(arguments)};
  }

  void run(const Command& command) {
    std::string reason;
    const auto child = _children.start(command, &reason);
    ASSERT_TRUE(child.has_value()) << reason;
    (void)_children.wait(*child);  // what it recorded tells how it went
  }

  ChildRecord onlyRecord() {
    const std::vector<ChildRecord> records = _played.records();
    EXPECT_THAT(records, SizeIs(1));
    return records.empty() ? ChildRecord() : records.front();
  }

  // No child is left, ended or not.
  static void expectNoChildren() {
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }

  std::string reasonFor(const Command& command) {
    std::string reason;
    EXPECT_EQ(_children.start(command, &reason), std::nullopt);
    return reason;
  }

  TemporaryFolder _folder;
  ChildFolder _played{_folder.path("played")};
  ScopedVariable _variable{ChildFolder::kVariable, _folder.path("played")};
  PosixChildProcesses _children;
};

// --- start and wait ------------------------------------------------------------------------------

TEST_F(PosixChildProcessesTest, ArgumentsReachTheChildAsTheyAre) {
  proves("CHILD-1");
  const std::vector<std::string> arguments = {
      "",          "a b",  "$HOME *", "\"quoted\" 'too'", "back\\slash", "two\nlines",
      "M\xC3\xBC", "\xFF", "-x=1"};

  run(playedChild(arguments));

  EXPECT_EQ(onlyRecord().executable, recordedChild());
  EXPECT_THAT(onlyRecord().arguments, ElementsAreArray(arguments));
}

TEST_F(PosixChildProcessesTest, AChildHoldsStandardInputAndTheNullDeviceOnly) {
  proves("CHILD-2");
  const std::string input = _folder.makeFile("input", "");
  const ScopedDescriptor standardInput(STDIN_FILENO, input, O_RDONLY);
  const ScopedDescriptor standardOutput(STDOUT_FILENO, _folder.path("output"), O_RDWR | O_CREAT);
  const int inheritable = open(input.c_str(), O_RDONLY);
  const int high = fcntl(inheritable, F_DUPFD, 200);

  run(playedChild());
  close(inheritable);
  close(high);

  EXPECT_THAT(onlyRecord().descriptors,
              ElementsAre(Pair(0, input), Pair(1, "/dev/null"), Pair(2, "/dev/null")));
}

// A process that uses the library need not have all of its standard descriptors.
TEST_F(PosixChildProcessesTest, AChildOfAProcessWithoutInputHasNoneEither) {
  EXPECT_TRUE(inChild([&] {
    close(STDIN_FILENO);
    run(playedChild());
    return onlyRecord().descriptors.count(STDIN_FILENO) == 0;
  }));
}

TEST_F(PosixChildProcessesTest, FirstLineComesThroughAStandardDescriptor) {
  EXPECT_TRUE(inChild([&] {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    return _children.firstLine({"/bin/sh", {"-c", "echo line"}}) == "line";
  }));
}

TEST_F(PosixChildProcessesTest, AChildMayWriteToItsNullDevice) {
  script("print\tx\nerror\tx\nwrite\t" + _folder.path("done") + "\n");

  run(playedChild());

  EXPECT_TRUE(std::filesystem::exists(_folder.path("done")));
}

TEST_F(PosixChildProcessesTest, AChildHasDefaultSignalHandling) {
  proves("CHILD-4");
  const ScopedAction pipe(SIGPIPE, SIG_IGN);
  const ScopedAction size(SIGXFSZ, SIG_IGN);
  const ScopedAction interrupt(SIGINT, SIG_IGN);
  const ScopedAction user(SIGUSR2, SIG_IGN);
  const ScopedAction last(NSIG - 1, SIG_IGN);
  sigset_t blocked;
  sigset_t previous;
  sigemptyset(&blocked);
  for (const int signal : {SIGTERM, SIGCHLD, SIGUSR1, NSIG - 2}) sigaddset(&blocked, signal);
  sigprocmask(SIG_BLOCK, &blocked, &previous);

  run(playedChild());
  sigprocmask(SIG_SETMASK, &previous, nullptr);

  EXPECT_THAT(onlyRecord().ignoredSignals, IsEmpty());
  EXPECT_THAT(onlyRecord().blockedSignals, IsEmpty());
}

TEST_F(PosixChildProcessesTest, AChildIsTheSameWhenNoDescriptorIsToBeHad) {
  proves("CHILD-4");
  const ScopedAction interrupt(SIGINT, SIG_IGN);
  const ScopedAction user(SIGUSR2, SIG_IGN);
  {
    const ScopedLimit limit(RLIMIT_NOFILE, 64);
    const std::vector<int> descriptors = takeAllDescriptors();
    run(playedChild());
    for (const int descriptor : descriptors) close(descriptor);
  }

  EXPECT_THAT(onlyRecord().ignoredSignals, IsEmpty());
  EXPECT_THAT(onlyRecord().descriptors, SizeIs(3));
}

TEST_F(PosixChildProcessesTest, AChildInheritsEnvironmentFolderMaskAndUser) {
  proves("CHILD-3");
  const ScopedVariable variable("HOTFIX_TEST_VARIABLE", "a value");
  const mode_t mask = umask(027);

  run(playedChild());
  umask(mask);

  EXPECT_THAT(onlyRecord().environment, Contains(Pair("HOTFIX_TEST_VARIABLE", "a value")));
  EXPECT_EQ(onlyRecord().directory, std::filesystem::current_path().string());
  EXPECT_EQ(onlyRecord().mask, 027U);
  EXPECT_EQ(onlyRecord().user, geteuid());
}

TEST_F(PosixChildProcessesTest, StartReturnsWhileTheChildRuns) {
  proves("CHILD-5");
  script("await\t" + _folder.path("go") + "\nwrite\t" + _folder.path("done") + "\tdone\n");

  const auto child = _children.start(playedChild(), nullptr);
  ASSERT_TRUE(child.has_value());
  const bool wasDone = std::filesystem::exists(_folder.path("done"));
  _folder.makeFile("go", "");
  EXPECT_EQ(_children.wait(*child), std::nullopt);

  EXPECT_FALSE(wasDone);
  EXPECT_EQ(_folder.content("done"), "done");
}

TEST_F(PosixChildProcessesTest, WaitLeavesNoChildBehind) {
  proves("CHILD-5");
  run(playedChild());

  expectNoChildren();
}

TEST_F(PosixChildProcessesTest, WaitReturnsHoweverTheChildEnds) {
  proves("CHILD-5");
  for (const char* ending : {"exit\t3\n", "kill\t15\n", "kill\t9\n"}) {
    script(ending);

    run(playedChild());

    expectNoChildren();
  }
}

TEST_F(PosixChildProcessesTest, WaitTellsTheSignalThatEndedTheChild) {
  const std::vector<std::pair<std::string, std::optional<std::string>>> endings = {
      {"exit\t0\n", std::nullopt},
      {"exit\t137\n", std::nullopt},
      {"kill\t15\n", "signal 15 (Terminated)"},
      {"kill\t9\n", "signal 9 (Killed)"}};
  for (const auto& [ending, told] : endings) {
    script(ending);

    const auto child = _children.start(playedChild(), nullptr);

    ASSERT_TRUE(child.has_value());
    EXPECT_EQ(_children.wait(*child), told) << ending;
  }
}

TEST_F(PosixChildProcessesTest, SignalsDoNotCutTheWaitShort) {
  proves("CHILD-5");
  const ScopedAction action(SIGUSR1, passOver);
  script("signal-parent\t10\t50\nwrite\t" + _folder.path("done") + "\n");

  run(playedChild());

  EXPECT_TRUE(std::filesystem::exists(_folder.path("done")));
  expectNoChildren();
}

TEST_F(PosixChildProcessesTest, WaitingForNobodyReturns) {
  EXPECT_EQ(_children.wait(getpid()), std::nullopt);

  expectNoChildren();
}

TEST_F(PosixChildProcessesTest, ExecutablesAreNotLookedUp) {
  proves("CHILD-1");
  EXPECT_EQ(reasonFor({"sh", {}}), "No such file or directory");
}

TEST_F(PosixChildProcessesTest, ARelativeExecutableCountsFromTheWorkingFolder) {
  proves("CHILD-1");
  const std::string relative = std::filesystem::relative(recordedChild()).string();

  run({relative, {}});

  EXPECT_EQ(onlyRecord().executable, relative);
}

TEST_F(PosixChildProcessesTest, WhatCannotBeExecutedIsTold) {
  proves("CHILD-6");
  EXPECT_EQ(reasonFor({_folder.makeFile("plain", "", 0644), {}}), "Permission denied");
  EXPECT_EQ(reasonFor({_folder.path(), {}}), "Permission denied");
  EXPECT_EQ(reasonFor({_folder.makeFile("text", "echo x\n", 0755), {}}), "Exec format error");
  EXPECT_EQ(reasonFor({"", {}}), "No such file or directory");
  EXPECT_EQ(reasonFor(playedChild({std::string(1 << 20, 'x')})), "Argument list too long");
}

TEST_F(PosixChildProcessesTest, AFailedStartLeavesNothingBehind) {
  proves("CHILD-6");
  const std::size_t descriptors = countOpenDescriptors();

  (void)reasonFor({"/nowhere/tool", {}});  // what it leaves is looked at

  EXPECT_EQ(countOpenDescriptors(), descriptors);
  expectNoChildren();
}

// --- firstLine -----------------------------------------------------------------------------------

struct LineCase {
  std::string name;
  std::string script;
  std::optional<std::string> expected;
};

class FirstLineTest : public PosixChildProcessesTest,
                      public ::testing::WithParamInterface<LineCase> {};

TEST_P(FirstLineTest, IsCutAtTheLineFeed) {
  proves("CHILD-7");
  script(GetParam().script);

  EXPECT_EQ(_children.firstLine(playedChild()), GetParam().expected);

  expectNoChildren();
}

const std::vector<LineCase> kLineCases = {
    {"OneLine", "print\t/java%0A\n", "/java"},
    {"TwoLines", "print\ta%0Ab%0A\n", "a"},
    {"NoLineFeed", "print\ta\n", "a"},
    {"EmptyLine", "print\t%0A\n", ""},
    {"EmptyLineBeforeAnother", "print\t%0Ab%0A\n", ""},
    {"Nothing", "exit\t0\n", std::nullopt},
    {"ErrorOutputOnly", "error\ta%0A\n", std::nullopt},
    {"InPieces", "print\ta\ndrain\nprint\tb\ndrain\nprint\tc%0A\n", "abc"},
    {"CarriageReturnStays", "print\ta%0D%0A\n", "a\r"},
    {"LineBeforeFailure", "print\ta%0A\nexit\t1\n", "a"},
    {"LineBeforeKill", "print\ta%0A\nkill\t9\n", "a"},
    {"OneBelowTheLimit", "fill\t1021\nprint\t%0A\n", std::string(1021, 'x')},
    {"TheLimit", "fill\t1022\nprint\t%0A\n", std::string(1022, 'x')},
    {"OneAboveTheLimit", "fill\t1023\nprint\t%0A\n", std::string(1022, 'x')},
    {"TheLimitWithoutLineFeed", "fill\t1022\n", std::string(1022, 'x')},
    {"FarAboveTheLimit", "fill\t1000000\n", std::string(1022, 'x')},
    {"TheLimitInPieces", "fill\t1000\ndrain\nfill\t23\n", std::string(1022, 'x')},
};

INSTANTIATE_TEST_SUITE_P(Lines, FirstLineTest, ::testing::ValuesIn(kLineCases),
                         [](const auto& test) { return test.param.name; });

TEST_F(PosixChildProcessesTest, FirstLineGivesTheChildAPipeAndTheNullDevice) {
  proves("CHILD-7");
  const ScopedDescriptor standardInput(STDIN_FILENO, "/dev/zero", O_RDONLY);
  script("print\ta%0A\n");

  EXPECT_EQ(_children.firstLine(playedChild({"--failfast"})), "a");

  EXPECT_THAT(
      onlyRecord().descriptors,
      ElementsAre(Pair(0, "/dev/zero"), Pair(1, StartsWith("pipe:")), Pair(2, "/dev/null")));
  EXPECT_THAT(onlyRecord().arguments, ElementsAre("--failfast"));
}

TEST_F(PosixChildProcessesTest, FirstLineWaitsForTheChildsEnd) {
  proves("CHILD-7");
  script("print\ta%0A\nwrite\t" + _folder.path("done") + "\n");

  EXPECT_EQ(_children.firstLine(playedChild()), "a");

  EXPECT_TRUE(std::filesystem::exists(_folder.path("done")));
}

TEST_F(PosixChildProcessesTest, AChildThatGoesOnPrintingIsStopped) {
  proves("CHILD-7");
  const ScopedAction action(SIGPIPE, SIG_IGN);
  script("print\ta%0A\nfill\t1000000\nwrite\t" + _folder.path("done") + "\n");

  EXPECT_EQ(_children.firstLine(playedChild()), "a");

  EXPECT_FALSE(std::filesystem::exists(_folder.path("done")));
  expectNoChildren();
}

TEST_F(PosixChildProcessesTest, SignalsDoNotCutTheLineShort) {
  const ScopedAction action(SIGUSR1, passOver);
  script("print\ta\nsignal-parent\t10\t50\nprint\tb%0A\n");

  EXPECT_EQ(_children.firstLine(playedChild()), "ab");
}

TEST_F(PosixChildProcessesTest, FirstLineLeavesNoDescriptorOpen) {
  proves("CHILD-7");
  const std::size_t descriptors = countOpenDescriptors();
  script("print\ta%0A\n");

  EXPECT_EQ(_children.firstLine(playedChild()), "a");
  EXPECT_EQ(_children.firstLine({"/nowhere/tool", {}}), std::nullopt);

  EXPECT_EQ(countOpenDescriptors(), descriptors);
}

TEST_F(PosixChildProcessesTest, WithoutAPipeThereIsNoFirstLineAndNoStart) {
  script("print\ta%0A\n");
  std::optional<std::string> line;
  {
    const ScopedLimit limit(RLIMIT_NOFILE, 64);
    const std::vector<int> descriptors = takeAllDescriptors();
    line = _children.firstLine(playedChild());
    for (const int descriptor : descriptors) close(descriptor);
  }

  EXPECT_EQ(line, std::nullopt);
  EXPECT_THAT(_played.records(), IsEmpty());
}

// --- shell ---------------------------------------------------------------------------------------

TEST_F(PosixChildProcessesTest, ShellAnswersTheWaitStatus) {
  proves("CHILD-8");
  const int exited = _children.shell("exit 3");
  const int killed = _children.shell("kill -9 $$");

  EXPECT_TRUE(WIFEXITED(exited));
  EXPECT_EQ(WEXITSTATUS(exited), 3);
  EXPECT_TRUE(WIFSIGNALED(killed));
  EXPECT_EQ(WTERMSIG(killed), SIGKILL);
  EXPECT_EQ(_children.shell(""), 0);
}

TEST_F(PosixChildProcessesTest, ShellUnderstandsTheWholeText) {
  proves("CHILD-8");
  EXPECT_EQ(
      _children.shell("cd '" + _folder.path() + "' && echo 'a  b' | cat > out; echo c >> out"), 0);

  EXPECT_EQ(_folder.content("out"), "a  b\nc\n");
}

TEST_F(PosixChildProcessesTest, ShellTakesAHyphenForACommand) {
  proves("CHILD-8");
  const int status = _children.shell("-v 2>/dev/null; exit 5");

  EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST_F(PosixChildProcessesTest, ShellInheritsOutputAndError) {
  {
    const ScopedDescriptor output(STDOUT_FILENO, _folder.path("out"), O_WRONLY | O_CREAT);
    const ScopedDescriptor error(STDERR_FILENO, _folder.path("err"), O_WRONLY | O_CREAT);
    (void)_children.shell("echo to output; echo to error >&2");  // what it leaves is looked at
  }

  EXPECT_EQ(_folder.content("out"), "to output\n");
  EXPECT_EQ(_folder.content("err"), "to error\n");
}

TEST_F(PosixChildProcessesTest, ShellHoldsNoOtherDescriptor) {
  const int inheritable = open("/dev/zero", O_RDONLY);

  (void)_children.shell("'" + recordedChild() + "'");  // what it leaves is looked at
  close(inheritable);

  EXPECT_THAT(onlyRecord().descriptors, SizeIs(3));
}

TEST_F(PosixChildProcessesTest, AShellThatCannotBeStartedAnswersMinusOne) {
  proves("CHILD-8");
  EXPECT_EQ(_children.shell(std::string(1 << 20, ' ')), -1);
}

TEST_F(PosixChildProcessesTest, AStatusThatTheSystemDoesNotKeepIsMinusOne) {
  const ScopedAction action(SIGCHLD, SIG_IGN);

  EXPECT_EQ(_children.shell("echo x > '" + _folder.path("done") + "'"), -1);

  EXPECT_EQ(_folder.content("done"), "x\n") << "waited all the same";
}

}  // namespace
}  // namespace installer::test
