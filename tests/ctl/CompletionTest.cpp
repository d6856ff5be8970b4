#include "ctl/Completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <set>

#include "ctl/Answers.h"
#include "ctl/CommandLine.h"
#include "ctl/Commands.h"
#include "ctl/Program.h"
#include "support/Proves.h"

namespace installer::ctl {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

Action declareShow(CLI::App& line) {
  struct Asked {
    std::optional<std::string> package, file, level, count;
    std::vector<std::string> places, rules;
    bool all = false;
  };
  auto asked = std::make_shared<Asked>();
  addText(line, "package", asked->package, "what to show");
  addTexts(line, "place", asked->places, "where to look");
  addText(line, "-o,--output", asked->file, "where to write")->type_name("FILE");
  addText(line, "--level", asked->level, "how much")->type_name("LEVEL")->check(oneOf({"a", "b"}));
  addText(line, "--rcpdata", asked->count, "the data folder")->type_name("FOLDER");
  addText(line, "--wait", asked->count, "how long")->type_name("SECONDS");
  addTexts(line, "--disable", asked->rules, "which not")
      ->type_name("RULES")
      ->allow_extra_args(false);
  line.add_flag("--all", asked->all, "shows all");
  return [asked](Surroundings&) { return 0; };
}

Action declareNothing(CLI::App& /*line*/) {
  return [](Surroundings&) { return 0; };
}

constexpr Command kTable[] = {
    {"show", "shows something", "Shows something.", {}, declareShow},
    {"rest", "does nothing", "Does nothing.", {}, declareNothing},
};

Choices choices(const std::vector<std::string>& words) {
  return choicesFor(words, kTable);
}

std::vector<std::string> words(const std::vector<std::string>& line) {
  const Choices found = choices(line);
  EXPECT_EQ(NextWord::oneOfThese, found.kind);
  std::vector<std::string> all;
  for (const Choice& choice : found.words) all.push_back(choice.word);
  return all;
}

NextWord kind(const std::vector<std::string>& line) {
  const Choices found = choices(line);
  EXPECT_THAT(found.words, IsEmpty());
  return found.kind;
}

TEST(CompletionTest, FirstComesACommand) {
  proves("COMPLETION-1");
  EXPECT_THAT(words({""}), ElementsAre("show", "rest"));
  EXPECT_THAT(words({}), ElementsAre("show", "rest"));
  EXPECT_THAT(words({"-"}), ElementsAre("--help", "--version"));
  EXPECT_EQ("shows something", choices({"sh"}).words.at(0).meaning);
}

TEST(CompletionTest, EveryOptionOfTheCommandIsOffered) {
  proves("COMPLETION-1");
  EXPECT_THAT(words({"rest", "-"}), ElementsAre("--help", "--json", "--color"));
  EXPECT_THAT(words({"show", "--"}),
              ElementsAre("--help", "--json", "--color", "--output", "--level", "--rcpdata",
                          "--wait", "--disable", "--all"));
  EXPECT_EQ("how much", choices({"show", "--"}).words.at(4).meaning);
}

TEST(CompletionTest, WhatWasSaidIsNotOfferedAgainUnlessItCanBeSaidTwice) {
  EXPECT_THAT(words({"show", "--json", "--level=a", "-o", "x", "--disable", "HF101", "-"}),
              ElementsAre("--help", "--color", "--rcpdata", "--wait", "--disable", "--all"));
}

TEST(CompletionTest, WordsThatAValueCanBeAreOffered) {
  proves("COMPLETION-1");
  EXPECT_THAT(words({"rest", "--color", ""}), ElementsAre("auto", "always", "never"));
  EXPECT_THAT(words({"rest", "--color=al"}),
              ElementsAre("--color=auto", "--color=always", "--color=never"));
  EXPECT_THAT(words({"show", "--level", "x"}), ElementsAre("a", "b"));
}

TEST(CompletionTest, RulesAreOfferedOneBehindTheOther) {
  proves("COMPLETION-1");
  EXPECT_THAT(words({"show", "--disable", ""}), Contains("HF101"));
  EXPECT_THAT(words({"show", "--disable", "HF101,"}),
              AllOf(Contains("HF101,HF102"), Not(Contains("HF102"))));
  EXPECT_THAT(words({"show", "--disable=HF101,HF2"}), Contains("--disable=HF101,HF201"));
  EXPECT_EQ("The package has no hotfix.plist.",
            choices({"show", "--disable", ""}).words.at(0).meaning);
}

TEST(CompletionTest, FilesAndFoldersAreLookedForWhereTheyAreMeant) {
  proves("COMPLETION-1");
  EXPECT_EQ(NextWord::file, kind({"show", "--output", ""}));
  EXPECT_EQ(NextWord::file, kind({"show", "-o", ""}));
  EXPECT_EQ(NextWord::file, kind({"show", "--output=a"}));
  EXPECT_EQ(NextWord::folder, kind({"show", "--rcpdata", ""}));
  EXPECT_EQ(NextWord::folder, kind({"show", "-rcpdata", "a"}));
  EXPECT_EQ(NextWord::folder, kind({"show", ""}));
  EXPECT_EQ(NextWord::folder, kind({"show", "x", "y", "z", ""})) << "the last one takes many";
}

TEST(CompletionTest, WhereNothingIsKnownNothingIsOffered) {
  EXPECT_THAT(words({"show", "--wait", ""}), IsEmpty());
  EXPECT_THAT(words({"show", "--unknown=a"}), IsEmpty());
  EXPECT_THAT(words({"show", "--all=a"}), IsEmpty());
  EXPECT_THAT(words({"rest", ""}), IsEmpty());
  EXPECT_THAT(words({"rest", "x", ""}), IsEmpty());
  EXPECT_THAT(words({"nothing", ""}), IsEmpty());
}

TEST(CompletionTest, ArgumentsAreCountedWithoutOptionsAndTheirValues) {
  EXPECT_EQ(NextWord::folder, kind({"show", "--all", "--output", "x", "--level=a", ""}));
  EXPECT_THAT(words({"rest", "--unknown", "--color", "never", "-"}),
              ElementsAre("--help", "--json"));
}

TEST(CompletionTest, BehindTwoDashesThereAreArgumentsOnly) {
  EXPECT_EQ(NextWord::folder, kind({"show", "--", "-"}));
  EXPECT_EQ(NextWord::folder, kind({"show", "--", "--level=a"}));
  EXPECT_THAT(words({"rest", "--color", "--", "-"}), Contains("--json")) << "it is the value";
}

TEST(CompletionTest, TheProgramTellsTheKindAndALineForEachWord) {
  const auto said = [](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"hotfixctl", "--complete"});
    test::Answers answers;
    EXPECT_EQ(0, runProgram(arguments, kTable, answers.output()));
    return answers.text();
  };

  EXPECT_EQ("words\nshow\tshows something\nrest\tdoes nothing\n", said({""}));
  EXPECT_EQ("words\nauto\t\nalways\t\nnever\t\n", said({"rest", "--color", ""}));
  EXPECT_EQ("files\n", said({"show", "--output", ""}));
  EXPECT_EQ("folders\n", said({"show", ""}));
}

// What is offered to shells line by line must not break a line.
TEST(CompletionTest, NoTextOfACommandBreaksALine) {
  for (const Command& command : commands())
    for (const std::string begun : {"", "-"})
      for (const Choice& choice : choicesFor({std::string(command.name), begun}, commands()).words)
        EXPECT_EQ(std::string::npos, (choice.word + choice.meaning).find_first_of("\t\n"));
  EXPECT_THAT(textOf(choicesFor({""}, commands())), StartsWith("words\nnew\tmakes a"));
}

// A value of a name that nobody has thought of would be offered nothing.
TEST(CompletionTest, WhatEveryValueOfTheProgramCanBeIsKnown) {
  proves("COMPLETION-1");
  const std::set<std::string> free = {"CODE",   "DAYS", "FEATURE", "ID",     "NAME",
                                      "NUMBER", "PATH", "SECONDS", "VERSION"};
  for (const Command& command : commands()) {
    CLI::App line;
    Order order;
    declareLine(command, line, order);
    for (const CLI::Option* option : line.get_options()) {
      if (option->get_positional() || option->get_items_expected_max() == 0) continue;
      const std::string name = "--" + option->get_lnames().front();
      const Choices values = choicesFor({std::string(command.name), name, ""}, commands());
      const bool isFree = free.contains(option->get_type_name());
      const bool isOffered = values.kind != NextWord::oneOfThese || !values.words.empty();
      EXPECT_NE(isFree, isOffered) << command.name << " " << name << " " << option->get_type_name();
    }
  }
}

TEST(CompletionTest, LayoutsOfPackagesAreOffered) {
  proves("COMPLETION-1");
  const Choices layouts = choicesFor({"new", "--layout", ""}, commands());

  ASSERT_EQ(2u, layouts.words.size());
  EXPECT_EQ("default", layouts.words[0].word);
  EXPECT_EQ("flat", layouts.words[1].word);
}

}  // namespace
}  // namespace installer::ctl
