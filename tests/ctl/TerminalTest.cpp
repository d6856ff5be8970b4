// How answers look on a terminal.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

#include "ctl/Shown.h"
#include "support/Proves.h"

namespace installer::ctl {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using Environment = std::map<std::string, std::string>;

// What the program's help is on a terminal of so many columns.
std::string helpOnTerminal(unsigned short columns, const Environment& environment) {
  const winsize size{24, columns, 0, 0};
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child == 0) {
    for (const char* name : {"COLUMNS", "NO_COLOR", "TERM"}) unsetenv(name);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    execl(HOTFIX_BINARY_DIR "/hotfixctl", "hotfixctl", "explain", "--help", nullptr);
    _exit(127);
  }
  std::string text;
  char part[4096];
  for (ssize_t length = 0; (length = read(terminal, part, sizeof part)) > 0;)
    text.append(part, static_cast<std::size_t>(length));
  int status = -1;
  waitpid(child, &status, 0);
  close(terminal);
  EXPECT_EQ(0, status);
  std::erase(text, '\r');
  return text;
}

std::size_t longestLine(const std::string& text) {
  std::size_t longest = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) longest = std::max(longest, columnsOf(line));
  return longest;
}

TEST(TerminalTest, ItsWidthIsKept) {
  proves("CTL-4");
  EXPECT_LE(longestLine(helpOnTerminal(20, {})), 20u);
  EXPECT_LE(longestLine(helpOnTerminal(60, {})), 60u);
  EXPECT_GT(longestLine(helpOnTerminal(60, {})), 40u);
  EXPECT_GT(longestLine(helpOnTerminal(0, {})), 60u) << "a terminal that does not know";
  EXPECT_LE(longestLine(helpOnTerminal(60, {{"COLUMNS", "30"}})), 30u);
  EXPECT_LE(longestLine(helpOnTerminal(60, {{"COLUMNS", "x"}})), 60u);
  EXPECT_LE(longestLine(helpOnTerminal(60, {{"COLUMNS", "0"}})), 60u);
}

TEST(TerminalTest, ColorsAreShownUnlessSomebodyWantsNone) {
  proves("CTL-4");
  EXPECT_THAT(helpOnTerminal(80, {}), HasSubstr("\x1b[1mOptions\x1b[0m"));
  EXPECT_THAT(helpOnTerminal(80, {{"NO_COLOR", ""}}), HasSubstr("\x1b["));
  EXPECT_THAT(helpOnTerminal(80, {{"NO_COLOR", "1"}}), Not(HasSubstr("\x1b[")));
  EXPECT_THAT(helpOnTerminal(80, {{"TERM", "dumb"}}), Not(HasSubstr("\x1b[")));
  EXPECT_THAT(helpOnTerminal(80, {{"TERM", "xterm"}}), HasSubstr("\x1b["));
}

}  // namespace
}  // namespace installer::ctl
