// docs/lint.md lists every rule in the words of the table.

#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <vector>

#include "ctl/lint/Report.h"
#include "ctl/lint/RuleTable.h"

namespace installer::ctl::lint::test {
namespace {

using ::testing::ElementsAreArray;

std::string cell(std::string_view text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '|' || letter == '<') escaped += '\\';
    escaped += letter;
  }
  return escaped;
}

std::string rowOf(const Rule& rule) {
  return "| `" + std::string(rule.id) + "` | " + std::string(wordOf(rule.level)) + " | " +
         cell(rule.sentence) + " | " + cell(rule.remedy) + " |";
}

std::vector<std::string> documentedRows() {
  std::vector<std::string> rows;
  std::ifstream document(HOTFIX_SOURCE_DIR "/docs/lint.md");
  for (std::string line; std::getline(document, line);)
    if (line.starts_with("| `HF")) rows.push_back(line);
  return rows;
}

TEST(LintDocumentTest, EveryRuleIsListedInTheTablesWords) {
  std::vector<std::string> rows;
  for (const Rule& rule : kRules) rows.push_back(rowOf(rule));

  EXPECT_THAT(documentedRows(), ElementsAreArray(rows));
}

}  // namespace
}  // namespace installer::ctl::lint::test
