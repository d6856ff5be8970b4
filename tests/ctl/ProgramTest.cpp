#include "ctl/Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <new>
#include <sstream>

#include "base/LibraryLack.h"
#include "ctl/Answers.h"
#include "ctl/CommandLine.h"
#include "ctl/Commands.h"
#include "ctl/Json.h"
#include "ctl/Shown.h"
#include "ctl/Surroundings.h"
#include "hotfix/Version.h"
#include "support/Proves.h"
#include "support/ScopedVariable.h"

namespace installer::ctl {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

// What the test's command was asked for.
struct Asked {
  std::vector<std::string> places;
  bool doctor = false;
  bool json = false;
  bool color = false;
  std::optional<std::string> file;
};
Asked asked;

Action declareShow(CLI::App& line) {
  auto options = std::make_shared<Asked>();
  addTexts(line, "place", options->places, "where to look");
  line.add_flag("--doctor", options->doctor, "looks for signs of something half done");
  addText(line, "-o,--output", options->file, "where to write")->type_name("FILE");
  return [options](Surroundings& surroundings) {
    asked = *options;
    asked.json = surroundings.json;
    asked.color = surroundings.style.color;
    surroundings.out.write("shown\n");
    return 3;
  };
}

Action declareGive(CLI::App& line) {
  auto options = std::make_shared<Asked>();
  auto number = std::make_shared<int>();
  addText(line, "--rcpdata", options->file, "the data");
  line.add_option("--number", *number, "a number");
  return [options, number](Surroundings&) {
    asked = *options;
    return 5;
  };
}

Action declareFail(CLI::App& /*line*/) {
  return [](Surroundings&) -> int { throw std::bad_alloc(); };
}

Action declareLack(CLI::App& /*line*/) {
  return [](Surroundings&) -> int { throw xml::LibraryLack("libxml2 is not there"); };
}

constexpr ExitStatus kStatuses[] = {{3, "it was shown, and here is a longer text about it"}};
constexpr Command kTable[] = {
    {"show", "shows something", "Shows something.\n\nAt length.", kStatuses, declareShow},
    {"give", "gives something", "Gives.", {}, declareGive},
    {"fail", "fails", "Fails.", {}, declareFail},
    {"lack", "lacks", "Lacks.", {}, declareLack},
};

class ProgramTest : public ::testing::Test {
 protected:
  int run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "hotfixctl");
    asked = {};
    CaptureStderr();
    const int status = runProgram(arguments, kTable, _answers.output());
    _complaint = GetCapturedStderr();
    return status;
  }

  test::Answers _answers;
  std::string _complaint;
};

TEST_F(ProgramTest, TheCommandGetsItsOptionsAndItsStatusIsTheProgramsOwn) {
  EXPECT_EQ(3, run({"show", "/a", "--doctor", "/b", "--json"}));

  EXPECT_EQ((std::vector<std::string>{"/a", "/b"}), asked.places);
  EXPECT_TRUE(asked.doctor);
  EXPECT_TRUE(asked.json);
  EXPECT_EQ("shown\n", _answers.text());
  EXPECT_EQ("", _complaint);
}

TEST_F(ProgramTest, WithoutOptionsTheAnswerIsForPeople) {
  EXPECT_EQ(3, run({"show"}));

  EXPECT_FALSE(asked.json);
  EXPECT_FALSE(asked.color);
  EXPECT_FALSE(asked.doctor);
  EXPECT_EQ(std::nullopt, asked.file);
}

TEST_F(ProgramTest, ArgumentsAreTakenAsTheyStand) {
  proves("CTL-3");
  EXPECT_EQ(3, run({"show", "[a,b]", "a=b", "", "-o", "[c,d]", "--", "--json", "--"}));

  EXPECT_EQ("[c,d]", asked.file);
  EXPECT_EQ((std::vector<std::string>{"[a,b]", "a=b", "", "--json", "--"}), asked.places);
  EXPECT_FALSE(asked.json);
}

TEST_F(ProgramTest, TheInstallersOptionIsOneOnlyWhereThereIsSuch) {
  proves("CTL-3");
  EXPECT_EQ(3, run({"show", "--", "-rcpdata", "-x"}));
  EXPECT_EQ((std::vector<std::string>{"-rcpdata", "-x"}), asked.places);

  EXPECT_EQ(64, run({"show", "-rcpdata"}));
  EXPECT_EQ("hotfixctl: show has no option \"-rcpdata\"\n", _complaint);

  EXPECT_EQ(5, run({"give", "-rcpdata", "/data"}));
  EXPECT_EQ("/data", asked.file);
}

TEST_F(ProgramTest, WhatStandsBehindTheEndOfOptionsIsNoUnknownOption) {
  EXPECT_EQ(64, run({"fail", "--", "-x"}));

  EXPECT_EQ("hotfixctl: \"-x\" is one argument too many for fail\n", _complaint);
}

TEST_F(ProgramTest, ValuesThatAreRefusedAreToldAsTheyStand) {
  proves("CTL-3");
  EXPECT_EQ(64, run({"show", "--color", "[x"}));
  EXPECT_THAT(_complaint, HasSubstr("[x"));

  EXPECT_EQ(64, run({"give", "--number", "[1]"}));
  EXPECT_THAT(_complaint, HasSubstr("[1]"));
}

TEST_F(ProgramTest, ColorsAreOnDemand) {
  EXPECT_EQ(3, run({"show", "--color", "always"}));
  EXPECT_TRUE(asked.color);

  EXPECT_EQ(3, run({"show", "--color=never"}));
  EXPECT_FALSE(asked.color);

  EXPECT_EQ(3, run({"show", "--color", "auto"}));
  EXPECT_FALSE(asked.color);
}

TEST_F(ProgramTest, AnotherColorIsRefused) {
  EXPECT_EQ(64, run({"show", "--color", "blue"}));

  EXPECT_THAT(_complaint, StartsWith("hotfixctl: show: --color: blue"));
}

TEST_F(ProgramTest, AnUnknownOptionIsRefusedWithTheNearestOne) {
  proves("CTL-3");
  EXPECT_EQ(64, run({"show", "/a", "--docter"}));

  EXPECT_EQ("hotfixctl: show has no option \"--docter\"; did you mean \"--doctor\"?\n", _complaint);
  EXPECT_EQ("", _answers.text());
}

TEST_F(ProgramTest, AnUnknownOptionThatIsNearToNoneIsRefused) {
  EXPECT_EQ(64, run({"show", "--everything=yes"}));
  EXPECT_EQ("hotfixctl: show has no option \"--everything\"\n", _complaint);

  EXPECT_EQ(64, run({"show", "-x"}));
  EXPECT_EQ("hotfixctl: show has no option \"-x\"\n", _complaint);
}

TEST_F(ProgramTest, AnArgumentTooManyIsRefused) {
  proves("CTL-5");
  EXPECT_EQ(64, run({"fail", "/a\x1b"}));

  EXPECT_EQ("hotfixctl: \"/a\\x1b\" is one argument too many for fail\n", _complaint);

  EXPECT_EQ(64, run({"fail", "[a]"}));
  EXPECT_EQ("hotfixctl: \"[a]\" is one argument too many for fail\n", _complaint);
}

TEST_F(ProgramTest, AnUnknownCommandIsRefusedWithTheNearestOne) {
  proves("CTL-3");
  EXPECT_EQ(64, run({"shwo"}));

  EXPECT_EQ("hotfixctl: there is no command \"shwo\"; did you mean \"show\"?\n", _complaint);
}

TEST_F(ProgramTest, WithoutACommandTheHelpIsNamed) {
  EXPECT_EQ(64, run({}));
  EXPECT_EQ("hotfixctl: a command is missing; hotfixctl --help lists all\n", _complaint);

  EXPECT_EQ(64, run({"install-everything"}));
  EXPECT_EQ("hotfixctl: there is no command \"install-everything\"; hotfixctl --help lists all\n",
            _complaint);

  EXPECT_EQ(64, run({"--json", "show"}));
  EXPECT_EQ("hotfixctl: \"--json\" stands before the command; hotfixctl --help lists all\n",
            _complaint);
}

TEST_F(ProgramTest, AnUnknownOptionOfTheProgramIsRefusedWithTheNearestOne) {
  proves("CTL-3");
  EXPECT_EQ(64, run({"--hepl"}));

  EXPECT_EQ("hotfixctl: there is no option \"--hepl\"; did you mean \"--help\"?\n", _complaint);
}

TEST_F(ProgramTest, NothingStandsBehindTheProgramsOwnOptions) {
  for (const std::string option : {"--version", "--help", "-h"}) {
    EXPECT_EQ(64, run({option, "--jsno"}));
    EXPECT_EQ("hotfixctl: \"--jsno\" is one argument too many for " + option + "\n", _complaint);
  }
  EXPECT_EQ("", _answers.text());
}

TEST_F(ProgramTest, TheVersionIsTheLibrarys) {
  EXPECT_EQ(0, run({"--version"}));

  EXPECT_EQ("hotfixctl " + std::string(kVersion) + "\n", _answers.text());
}

TEST_F(ProgramTest, LackOfMemoryIsAnErrorWithAStatus) {
  EXPECT_EQ(70, run({"fail"}));

  EXPECT_EQ("hotfixctl: there is not enough memory\n", _complaint);
}

TEST_F(ProgramTest, LackOfALibraryIsAnErrorWithAStatus) {
  EXPECT_EQ(70, run({"lack"}));

  EXPECT_EQ("hotfixctl: libxml2 is not there\n", _complaint);
}

TEST_F(ProgramTest, TheHelpListsCommandsOptionsAndStatuses) {
  for (const char* option : {"-h", "--help"}) {
    EXPECT_EQ(0, run({option}));
    const std::string help = _answers.text();

    EXPECT_THAT(help, StartsWith("Usage: hotfixctl <command> "));
    EXPECT_THAT(help, HasSubstr("\n  show                    shows something\n"));
    EXPECT_THAT(help, HasSubstr("\n  --version               tells the version\n"));
    EXPECT_THAT(help, HasSubstr("\n  64  the command line cannot be understood\n"));
    EXPECT_THAT(help, HasSubstr("\n  74  the answer could not be written\n"));
  }
}

TEST_F(ProgramTest, ACommandsHelpTellsItsOptionsArgumentsAndStatuses) {
  proves("CTL-4");
  EXPECT_EQ(0, run({"show", "--help"}));

  EXPECT_EQ(
      "Usage: hotfixctl show [<option>...] [<place>...]\n"
      "\n"
      "Shows something.\n"
      "\n"
      "At length.\n"
      "\n"
      "Arguments\n"
      "  <place>...              where to look\n"
      "\n"
      "Options\n"
      "  -h, --help              tells all this\n"
      "  --json                  answers for programs, as JSON\n"
      "  --color WHEN            whether the answer has colours: auto, always or never\n"
      "  --doctor                looks for signs of something half done\n"
      "  -o, --output FILE       where to write\n"
      "\n"
      "Exit status\n"
      "  3   it was shown, and here is a longer text about it\n"
      "  64  the command line cannot be understood\n"
      "  70  the machine lacks memory or a library that is needed\n"
      "  74  the answer could not be written\n",
      _answers.text());
}

TEST_F(ProgramTest, ACommandWithoutArgumentsHasNoneInItsHelp) {
  EXPECT_EQ(0, run({"fail", "-h"}));

  EXPECT_THAT(_answers.text(), StartsWith("Usage: hotfixctl fail [<option>...]\n\nFails.\n"));
  EXPECT_THAT(_answers.text(), Not(HasSubstr("Arguments")));
}

TEST_F(ProgramTest, TheHelpFitsANarrowTerminal) {
  proves("CTL-4");
  const installer::test::ScopedVariable columns("COLUMNS", "20");

  EXPECT_EQ(0, run({"show", "--help"}));
  EXPECT_EQ(0, run({"--help"}));
  for (const Command& command : commands())
    EXPECT_EQ(0, runProgram({"hotfixctl", std::string(command.name), "--help"}, commands(),
                            _answers.output()));

  std::istringstream lines(_answers.text());
  for (std::string line; std::getline(lines, line);) EXPECT_LE(columnsOf(line), 20u) << line;
}

TEST_F(ProgramTest, AnAnswerThatCannotBeWrittenIsAnErrorWithAStatus) {
  std::FILE* const full = std::fopen("/dev/full", "w");
  ASSERT_NE(nullptr, full);
  Output out(full);
  CaptureStderr();

  EXPECT_EQ(74, runProgram({"hotfixctl", "show"}, kTable, out));

  EXPECT_EQ("hotfixctl: the answer cannot be written: No space left on device\n",
            GetCapturedStderr());
  std::fclose(full);
}

TEST(JsonTest, BytesThatAreNoUtf8DoNotBreakTheDocument) {
  proves("CTL-5");
  EXPECT_EQ("{\n  \"b\": \"/a\\ufffd\",\n  \"a\": null\n}\n",
            textOf({{"b", jsonOf("/a\xff")}, {"a", jsonOf(std::nullopt)}}));
}

}  // namespace
}  // namespace installer::ctl
