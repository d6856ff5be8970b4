// What the shells themselves make of a tab in a command line: each is started on a terminal, as by
// somebody who types, and the program that it then runs notes what it was handed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "ctl/Commands.h"
#include "support/Judge.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace installer::ctl {
namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;

constexpr const char* kScripts = HOTFIX_SOURCE_DIR "/packaging/completions";
constexpr int kPatience = 60'000;  // milliseconds, for a machine that has much else to do

// A shell at a terminal, which answers what is typed.
class TypedShell {
 public:
  TypedShell(const std::string& folder, const std::vector<std::string>& command) {
    const winsize size{50, 150, 0, 0};
    _process = forkpty(&_terminal, nullptr, nullptr, &size);
    if (_process == 0) start(folder, command);
  }
  TypedShell(const TypedShell&) = delete;
  TypedShell& operator=(const TypedShell&) = delete;
  ~TypedShell() {
    kill(_process, SIGKILL);
    waitpid(_process, nullptr, 0);
    close(_terminal);
  }

  void type(const std::string& keys) const {
    ASSERT_EQ(static_cast<ssize_t>(keys.size()), write(_terminal, keys.data(), keys.size()));
  }

  // All that comes to the screen up to such a text; empty when the text does not come.
  std::string readUntil(const std::string& text) {
    std::string seen;
    pollfd waited{_terminal, POLLIN, 0};
    while (seen.find(text) == std::string::npos) {
      char part[4096];
      const ssize_t length =
          poll(&waited, 1, kPatience) > 0 ? read(_terminal, part, sizeof part) : 0;
      if (length <= 0) {
        ADD_FAILURE() << "\"" << text << "\" does not come: " << seen;
        return "";
      }
      seen.append(part, static_cast<std::size_t>(length));
    }
    return seen;
  }

 private:
  [[noreturn]] static void start(const std::string& folder,
                                 const std::vector<std::string>& command) {
    const std::string path = folder + "/bin:/usr/bin:/bin";
    setenv("PATH", path.c_str(), 1);
    setenv("HOME", folder.c_str(), 1);
    setenv("ZDOTDIR", folder.c_str(), 1);
    setenv("TERM", "dumb", 1);
    for (const char* name : {"COLUMNS", "LINES", "ENV", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
      unsetenv(name);
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    if (chdir((folder + "/work").c_str()) == 0) execvp(words[0], words.data());
    _exit(127);
  }

  pid_t _process = -1;
  int _terminal = -1;
};

class CompletionShellsTest : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    const std::string found = "command -v " + GetParam();
    if (test::askJudge(_folder.path(), found).status != 0)
      GTEST_SKIP() << GetParam() << " is missing; scripts/bootstrap tests installs it";
    // Tells what can come next, as the program does, and notes with what else it is called.
    _folder.makeFile("bin/hotfixctl",
                     "#!/bin/bash\n"
                     "if [[ $1 == --complete ]]; then exec " HOTFIX_BINARY_DIR
                     "/hotfixctl \"$@\"; fi\n"
                     "printf '%s\\0' \"$@\" >" +
                         _folder.path("said") + "\necho 'is' 'noted'\n",
                     0755);
    _folder.makeFolder("work");
    _folder.makeFile("bashrc", std::string("PS1='is''ready> '\n. ") + kScripts +
                                   "/hotfixctl.bash\nbind 'set bell-style none'\n");
    _folder.makeFile(".zshrc", std::string("fpath=(") + kScripts +
                                   " $fpath)\nautoload -U compinit\ncompinit -u -D\n"
                                   "PS1='is''ready> '\nunsetopt beep\n");
  }

  std::vector<std::string> command() const {
    if (GetParam() == "bash") return {"bash", "--noprofile", "--rcfile", _folder.path("bashrc")};
    if (GetParam() == "zsh") return {"zsh", "-d", "-i"};
    return {"fish",
            "--private",
            "--no-config",
            "-i",
            "-C",
            "function fish_prompt; echo -n 'is''ready> '; end; function fish_greeting; end; "
            "source " +
                std::string(kScripts) + "/hotfixctl.fish"};
  }

  // The arguments that the program is handed for what is typed behind its name.
  std::vector<std::string> handed(const std::string& keys) {
    TypedShell shell(_folder.path(), command());
    shell.readUntil("isready>");
    shell.type("hotfixctl " + keys + "\r");
    if (shell.readUntil("is noted").empty()) return {};
    std::vector<std::string> arguments;
    const std::string said = _folder.content("said");
    for (std::size_t at = 0; at < said.size(); at = said.find('\0', at) + 1)
      arguments.emplace_back(said.c_str() + at);
    return arguments;
  }

  test::TemporaryFolder _folder;
};

TEST_P(CompletionShellsTest, CommandsOptionsAndValuesAreCompleted) {
  proves("COMPLETION-2");
  EXPECT_THAT(handed("stat\t"), ElementsAre("status"));
  EXPECT_THAT(handed("status --doc\t"), ElementsAre("status", "--doctor"));
  EXPECT_THAT(handed("lint --color al\t"), ElementsAre("lint", "--color", "always"));
  EXPECT_THAT(handed("lint --color=ne\t"), ElementsAre("lint", "--color=never"));
  EXPECT_THAT(handed("lint --disable HF101,HF21\t"),
              ElementsAre("lint", "--disable", "HF101,HF210"));
}

TEST_P(CompletionShellsTest, FoldersAreCompletedWhateverTheirNames) {
  proves("COMPLETION-2");
  _folder.makeFolder("work/Fix & it's \"$HOME\".pkg");
  _folder.makeFile("work/Fix & a file.txt");

  std::vector<std::string> arguments = handed("lint Fi\t");

  ASSERT_EQ(2u, arguments.size());
  if (arguments[1].ends_with('/')) arguments[1].pop_back();
  EXPECT_EQ("Fix & it's \"$HOME\".pkg", arguments[1]);
}

TEST_P(CompletionShellsTest, FilesAreCompletedWhateverTheirNames) {
  proves("COMPLETION-2");
  _folder.makeFile("work/trace it's; $HOME");
  _folder.makeFile("work/events (1).json");

  EXPECT_THAT(handed("explain tra\t"), ElementsAre("explain", "trace it's; $HOME"));
  EXPECT_THAT(handed("explain --chrome-trace ev\t"),
              ElementsAre("explain", "--chrome-trace", "events (1).json"));
  EXPECT_THAT(handed("explain --chrome-trace=ev\t"),
              ElementsAre("explain", "--chrome-trace=events (1).json"));
}

TEST_P(CompletionShellsTest, WhatIsNoFileIsNotCompletedAsOne) {
  _folder.makeFile("work/stale");
  _folder.makeFile("work/zero");

  EXPECT_THAT(handed("zer\t"), ElementsAre("zer"));
  EXPECT_THAT(handed("stat\t"), ElementsAre("status"));
}

INSTANTIATE_TEST_SUITE_P(Shells, CompletionShellsTest, ::testing::Values("bash", "zsh", "fish"),
                         [](const auto& given) { return given.param; });

// --- What is offered -----------------------------------------------------------------------------

std::string offered(const test::TemporaryFolder& folder, const std::string& commandLine) {
  const test::JudgeVerdict verdict =
      test::askJudge(folder.path(), "export PATH=" HOTFIX_BINARY_DIR ":$PATH; " + commandLine);
  EXPECT_EQ(0, verdict.status) << verdict.output;
  return verdict.output;
}

TEST(CompletionListsTest, BashOffersEveryCommand) {
  proves("COMPLETION-2");
  const test::TemporaryFolder folder;
  std::string expected;
  for (const Command& command : commands()) expected += std::string(command.name) + "\n";

  EXPECT_EQ(expected, offered(folder, std::string("bash -c '. ") + kScripts +
                                          "/hotfixctl.bash; COMP_WORDS=(hotfixctl \"\"); "
                                          "COMP_CWORD=1; _hotfixctl; "
                                          "printf \"%s\\n\" \"${COMPREPLY[@]}\"'"));
}

TEST(CompletionListsTest, FishOffersEveryCommandWithItsMeaning) {
  proves("COMPLETION-2");
  const test::TemporaryFolder folder;
  if (test::askJudge(folder.path(), "command -v fish").status != 0) GTEST_SKIP() << "no fish";
  std::vector<std::string> expected;
  for (const Command& command : commands())
    expected.push_back(std::string(command.name) + "\t" + std::string(command.summary));
  std::sort(expected.begin(), expected.end());

  const std::string list =
      offered(folder, std::string("HOME=$PWD fish --no-config -c 'source ") + kScripts +
                          "/hotfixctl.fish; complete -C \"hotfixctl \"' | LC_ALL=C sort");

  std::string all;
  for (const std::string& line : expected) all += line + "\n";
  EXPECT_EQ(all, list);
}

class CompletionListTest : public CompletionShellsTest {};

TEST_P(CompletionListTest, EveryCommandIsOfferedWithItsMeaning) {
  proves("COMPLETION-2");
  TypedShell shell(_folder.path(), command());
  shell.readUntil("isready>");

  shell.type("hotfixctl \t");

  // Below the list the line is shown once more.
  const std::string list = shell.readUntil("isready> hotfixctl ");
  for (const Command& command : commands())
    EXPECT_THAT(list, ContainsRegex("\n" + std::string(command.name) + " +-- " +
                                    std::string(command.summary)));
}

INSTANTIATE_TEST_SUITE_P(Shells, CompletionListTest, ::testing::Values("zsh"),
                         [](const auto& given) { return given.param; });

}  // namespace
}  // namespace installer::ctl
