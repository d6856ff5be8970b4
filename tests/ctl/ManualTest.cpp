// Each command has a manual page, which tells all its options and exit statuses.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iterator>

#include "ctl/Commands.h"
#include "ctl/lint/Keys.h"

namespace installer::ctl {
namespace {

using ::testing::HasSubstr;

std::string pageOf(const std::string& name, const std::string& section = "1") {
  std::ifstream page(HOTFIX_SOURCE_DIR "/packaging/" + name + "." + section, std::ios::binary);
  EXPECT_TRUE(page) << name;
  return {std::istreambuf_iterator<char>(page), std::istreambuf_iterator<char>()};
}

// In the words of either of the two languages that manual pages are written in.
bool tellsOption(const std::string& page, const std::string& name) {
  return page.find("\n.It Fl -" + name) != std::string::npos ||
         page.find(" \\-\\-" + name + "\n") != std::string::npos ||
         page.find(" \\-\\-" + name + " ") != std::string::npos ||
         page.find(" \\-\\-" + name + "\"") != std::string::npos;
}

bool tellsStatus(const std::string& page, int number) {
  const std::string text = std::to_string(number) + "\n";
  return page.find("\n.It " + text) != std::string::npos ||
         page.find("\n.TP\n" + text) != std::string::npos;
}

TEST(ManualTest, EachCommandsPageTellsItsOptionsAndStatuses) {
  for (const Command& command : commands()) {
    const std::string page = pageOf("hotfixctl-" + std::string(command.name));
    CLI::App line;
    line.set_help_flag();
    (void)command.declare(line);
    for (const CLI::Option* option : line.get_options())
      for (const std::string& name : option->get_lnames())
        EXPECT_TRUE(tellsOption(page, name)) << command.name << " --" << name;
    for (const ExitStatus& status : command.statuses)
      EXPECT_TRUE(tellsStatus(page, status.number)) << command.name << " " << status.number;
  }
}

TEST(ManualTest, ThePageOfPackagesTellsEachKey) {
  const std::string page = pageOf("hotfix.plist", "5");
  for (const std::string_view key : lint::kKnownKeys)
    EXPECT_THAT(page, HasSubstr("\n.It Li " + std::string(key) + " Pq ")) << key;
}

TEST(ManualTest, TheProgramsPageTellsItsCommandsAndStatuses) {
  const std::string page = pageOf("hotfixctl");
  for (const Command& command : commands()) {
    EXPECT_THAT(page, HasSubstr("\n.It Cm " + std::string(command.name) + "\n"));
    EXPECT_THAT(page, HasSubstr("\n.Xr hotfixctl-" + std::string(command.name) + " 1"));
  }
  for (const ExitStatus& status : kCommonStatuses)
    EXPECT_TRUE(tellsStatus(page, status.number)) << status.number;
}

}  // namespace
}  // namespace installer::ctl
