// docs/errors.md is made of the tables that the programs tell their errors from. After a change of
// one of them
//
//   HOTFIX_UPDATE_DOCUMENTS=1 build/dev/tests/ctl-tests --gtest_filter='ErrorsDocumentTest.*'
//
// writes it anew.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "ctl/Commands.h"
#include "ctl/Endings.h"
#include "ctl/Shown.h"
#include "ctl/lint/Report.h"
#include "ctl/lint/RuleTable.h"
#include "hotfix/util/ErrorCode.h"
#include "support/Proves.h"

namespace installer::ctl {
namespace {

constexpr const char* kDocument = HOTFIX_SOURCE_DIR "/docs/errors.md";
constexpr Layout kLines{118, 0};

// A text as Markdown shows it as it is.
std::string escaped(std::string_view text) {
  std::string shown;
  for (const char letter : text) {
    if (std::string_view("|<*_`\\").find(letter) != std::string_view::npos) shown += '\\';
    shown += letter;
  }
  return shown;
}

std::string row(std::initializer_list<std::string> cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + " |";
  return line + "\n";
}

std::string capital(std::string_view text) {
  std::string sentence(text);
  sentence.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sentence.front())));
  return sentence;
}

std::string codes() {
  std::string text =
      "\n## Error codes\n\n"
      "`ERROR_CODE` in the error record, `/tmp/INSTALLATION_INTERNAL_PASTEBOARD`, with the values "
      "of "
      "`ERROR_DETAILS`.\n\n"
      "| Code | What has gone wrong | Found by | `ERROR_DETAILS` | What to do |\n"
      "|---|---|---|---|---|\n";
  for (const ErrorDescription& error : kErrors) {
    const auto* const ending = descriptionOf(static_cast<std::int64_t>(error.code));
    text += row({fmt::format("`{}`", static_cast<int>(error.code)), escaped(error.meaning),
                 escaped(error.sender), escaped(error.details),
                 ending == nullptr ? "see [below](#how-a-run-ends)" : escaped(ending->remedy)});
  }
  return text + fmt::format("\nNever sent again: {}.\n", fmt::join(kRetiredErrorCodes, ", "));
}

std::string ends() {
  std::string text =
      "\n## How a run ends\n\n"
      "As `hotfixctl explain` and `hotfixctl status` tell it from the trace; the name stands in "
      "their "
      "JSON. The installer's own exit status is 0 for the first and 1 for all others.\n\n"
      "| Name | What came of the run | Code | What to do |\n|---|---|---|---|\n";
  for (const EndingDescription& ending : endings())
    text += row({fmt::format("`{}`", ending.name), escaped(ending.meaning),
                 fmt::format("`{}`", static_cast<int>(ending.code)), escaped(ending.remedy)});
  return text;
}

std::string tableOf(std::span<const ExitStatus> statuses) {
  std::string text = "| Status | Meaning |\n|---|---|\n";
  for (const ExitStatus& status : statuses)
    text += row({fmt::format("`{}`", status.number), escaped(status.meaning)});
  return text;
}

std::string statuses() {
  std::string text =
      "\n## Exit statuses of hotfixctl\n\nOf every command:\n\n" + tableOf(kCommonStatuses);
  for (const Command& command : commands())
    text += fmt::format("\n### hotfixctl {}\n\n{} (`man hotfixctl-{}`).\n\n{}", command.name,
                        escaped(capital(command.summary)), command.name, tableOf(command.statuses));
  return text;
}

std::string rules() {
  std::string text =
      "\n## Rules of hotfixctl lint\n\n"
      "By subject, with their remedies in one line each, they are in [lint.md](lint.md).\n";
  for (const lint::Rule& rule : lint::kRules)
    text += fmt::format(
        "\n### {}\n\n{}\n{}\n{}", rule.id,
        broken(fmt::format("**{}** ({})", escaped(rule.sentence), lint::wordOf(rule.level)),
               kLines),
        broken(escaped(rule.explanation), kLines),
        broken(escaped(rule.remedy), kLines, "What to do: "));
  return text;
}

std::string document() {
  return "# Errors, ends and exit statuses\n\n"
         "What the installer and `hotfixctl` can end with, why, and what to do then. Made of the "
         "programs' own tables;\nafter a change of one of them this command makes it anew:\n\n"
         "    HOTFIX_UPDATE_DOCUMENTS=1 build/dev/tests/ctl-tests "
         "--gtest_filter='ErrorsDocumentTest.*'\n" +
         codes() + ends() + statuses() + rules();
}

std::string written() {
  std::ifstream file(kDocument, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(ErrorsDocumentTest, TellsEveryCodeEndStatusAndRuleInTheProgramsWords) {
  proves("CATALOGUE-1");
  const std::string expected = document();
  if (std::getenv("HOTFIX_UPDATE_DOCUMENTS") != nullptr)
    std::ofstream(kDocument, std::ios::binary) << expected;

  EXPECT_EQ(expected, written());
}

}  // namespace
}  // namespace installer::ctl
