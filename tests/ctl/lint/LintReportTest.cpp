#include "ctl/lint/Report.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "ctl/Shown.h"
#include "ctl/lint/RuleTable.h"
#include "hotfix/Version.h"

namespace installer::ctl::lint::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr Rule kError{"HF901", Level::error, "All is wrong.", "Mend it.", "It does harm."};
const Style kPlain{false, 80};

// Two findings, the second without a key and a line.
Findings twoFindings() {
  Findings findings;
  findings.add(rule("HF108"), {"/a b/hotfix.plist", "version", 7}, "version is missing.");
  findings.add(rule("HF111"), {"other.plist", std::nullopt, std::nullopt}, "A key is unknown.");
  return findings;
}

TEST(LintFindingsTest, LongTextsKeepTheirBeginningAndEnd) {
  Findings findings;
  std::string letters;
  for (int i = 0; i < 5000; ++i) letters += "\u20ac";
  for (const std::string shift : {"", "a", "ab"})
    findings.add(rule("HF116"), {shift + letters, shift + letters, 1},
                 shift + letters + " is odd.");
  findings.add(rule("HF116"), {"f", std::nullopt, 1}, std::string(Findings::kLongestText, 'x'));

  for (std::size_t i = 0; i < 3; ++i) {
    const Finding& finding = findings.kept()[i];
    for (const std::string& text : {finding.message, finding.place.file, *finding.place.key}) {
      EXPECT_LT(text.size(), Findings::kLongestText);
      EXPECT_EQ(shown(text), text) << "no character is cut";
      EXPECT_THAT(text, HasSubstr("\u20ac ... \u20ac"));
    }
    EXPECT_THAT(finding.message, ::testing::EndsWith(" is odd."));
  }
  EXPECT_EQ(std::string(Findings::kLongestText, 'x'), findings.kept()[3].message);
}

// --- For people ----------------------------------------------------------------------------------

TEST(LintTextReportTest, FindingsAreToldAsCompilersTellThem) {
  EXPECT_EQ(
      "/a b/hotfix.plist:7: error: version is missing. [HF108]\n"
      "    Give the hotfix a version, as a text.\n"
      "other.plist: note: A key is unknown. [HF111]\n"
      "    Nothing, when the key is for other programs.\n"
      "1 error, 0 warnings, 1 note\n",
      textOf(twoFindings(), kPlain));
}

TEST(LintTextReportTest, NothingFoundIsTold) {
  EXPECT_EQ("0 errors, 0 warnings, 0 notes\n", textOf(Findings(), kPlain));
}

TEST(LintTextReportTest, OnlyTheFirstOfOneRuleAreToldAndTheOthersCounted) {
  Findings findings;
  for (int i = 0; i < 23; ++i) findings.add(rule("HF119"), {"f", std::nullopt, 1}, "again");

  const std::string text = textOf(findings, kPlain);

  EXPECT_THAT(text, HasSubstr("\nand 3 of HF119 more\n0 errors, 23 warnings, 0 notes\n"));
  EXPECT_EQ(20U, findings.kept().size());
}

TEST(LintTextReportTest, ControlCharactersReachNoTerminal) {
  Findings findings;
  findings.add(rule("HF116"), {"a\x1B[2J\nb", std::nullopt, std::nullopt}, "c\x1B\n");

  const std::string text = textOf(findings, kPlain);

  EXPECT_THAT(text, Not(HasSubstr("\x1B")));
  EXPECT_EQ(3, std::count(text.begin(), text.end(), '\n'));
}

TEST(LintTextReportTest, LevelsHaveColoursWhereTheyAreWanted) {
  const std::string text = textOf(twoFindings(), {true, 80});

  EXPECT_THAT(text, HasSubstr(Style{true, 80}.bad("error")));
  EXPECT_THAT(text, HasSubstr(Style{true, 80}.faint("note")));
}

TEST(LintTextReportTest, ARuleIsExplainedWhole) {
  EXPECT_EQ("HF901 (error)\nAll is wrong.\n\nIt does harm.\n\nMend it.\n",
            explanationOf(kError, kPlain));
}

TEST(LintTextReportTest, TheListNamesEachRule) {
  const std::string list = listOfRules(kPlain);

  EXPECT_THAT(list, StartsWith("HF101  error    The package has no hotfix.plist.\n"));
  for (const Rule& rule : kRules) EXPECT_THAT(list, HasSubstr(std::string(rule.id) + "  "));
}

// --- For programs --------------------------------------------------------------------------------

TEST(LintJsonReportTest, FindingsAreToldWithTheirPlaces) {
  const Json json = jsonOf("/a b", twoFindings());

  EXPECT_EQ("hotfixctl/lint/1", json["schema"]);
  EXPECT_EQ("/a b", json["package"]);
  EXPECT_EQ(1, json["errors"]);
  EXPECT_EQ(0, json["warnings"]);
  EXPECT_EQ(1, json["notes"]);
  EXPECT_EQ(Json({{"rule", "HF108"},
                  {"level", "error"},
                  {"place", {{"file", "/a b/hotfix.plist"}, {"key", "version"}, {"line", 7}}},
                  {"message", "version is missing."},
                  {"remedy", "Give the hotfix a version, as a text."}}),
            json["findings"][0]);
  EXPECT_EQ(Json({{"file", "other.plist"}, {"key", nullptr}, {"line", nullptr}}),
            json["findings"][1]["place"]);
  EXPECT_TRUE(json["dropped"].empty());
}

TEST(LintJsonReportTest, WhatIsNotKeptIsCounted) {
  Findings findings;
  for (int i = 0; i < 21; ++i) findings.add(rule("HF119"), {"f", std::nullopt, 1}, "again");

  const Json json = jsonOf("p", findings);

  EXPECT_EQ(Json({{"HF119", 1}}), json["dropped"]);
  EXPECT_EQ(21, json["warnings"]);
  EXPECT_EQ(20U, json["findings"].size());
}

TEST(LintJsonReportTest, RulesAreListedWithAllTheirTexts) {
  const Json json = jsonOfRules();

  EXPECT_EQ("hotfixctl/lint-rules/1", json["schema"]);
  ASSERT_EQ(std::size(kRules), json["rules"].size());
  EXPECT_EQ(Json({{"rule", kRules[0].id},
                  {"level", "error"},
                  {"sentence", kRules[0].sentence},
                  {"remedy", kRules[0].remedy},
                  {"explanation", kRules[0].explanation}}),
            json["rules"][0]);
}

// --- SARIF: what its schema, version 2.1.0, requires
// -----------------------------------------------

const std::set<std::string> kSarifLevels = {"none", "note", "warning", "error"};

void expectMessage(const Json& message) {
  ASSERT_TRUE(message.contains("text"));
  EXPECT_TRUE(message["text"].is_string());
  EXPECT_FALSE(message["text"].get<std::string>().empty());
}

void expectRule(const Json& rule) {
  EXPECT_TRUE(rule["id"].is_string());
  for (const char* name : {"shortDescription", "fullDescription", "help"})
    expectMessage(rule[name]);
  EXPECT_TRUE(kSarifLevels.contains(rule["defaultConfiguration"]["level"]));
}

void expectResult(const Json& result, const Json& rules) {
  expectMessage(result["message"]);
  EXPECT_TRUE(kSarifLevels.contains(result["level"]));
  ASSERT_LT(result["ruleIndex"].get<std::size_t>(), rules.size());
  EXPECT_EQ(result["ruleId"], rules[result["ruleIndex"].get<std::size_t>()]["id"]);
  for (const Json& location : result["locations"]) {
    const Json& place = location["physicalLocation"];
    EXPECT_TRUE(place["artifactLocation"]["uri"].is_string());
    if (place.contains("region")) {
      EXPECT_LE(1, place["region"]["startLine"].get<int>());
    }
  }
}

TEST(LintSarifReportTest, EveryRequiredFieldIsThere) {
  const Json sarif = sarifOf(twoFindings());

  EXPECT_EQ("2.1.0", sarif["version"]);
  ASSERT_EQ(1U, sarif["runs"].size());
  const Json& driver = sarif["runs"][0]["tool"]["driver"];
  EXPECT_EQ("hotfixctl", driver["name"]);
  EXPECT_EQ(kVersion, driver["version"]);
  ASSERT_EQ(std::size(kRules), driver["rules"].size());
  for (const Json& rule : driver["rules"]) expectRule(rule);
  ASSERT_EQ(2U, sarif["runs"][0]["results"].size());
  for (const Json& result : sarif["runs"][0]["results"]) expectResult(result, driver["rules"]);
}

TEST(LintSarifReportTest, NoFindingIsAnEmptyListAndNoLackOfOne) {
  const Json sarif = sarifOf(Findings());

  ASSERT_TRUE(sarif["runs"][0]["results"].is_array());
  EXPECT_TRUE(sarif["runs"][0]["results"].empty());
}

TEST(LintSarifReportTest, PlacesAreUrisWithLinesAndKeys) {
  const Json results = sarifOf(twoFindings())["runs"][0]["results"];

  EXPECT_EQ(Json({{"physicalLocation",
                   {{"artifactLocation", {{"uri", "file:///a%20b/hotfix.plist"}}},
                    {"region", {{"startLine", 7}}}}},
                  {"logicalLocations", Json::array({{{"name", "version"}}})}}),
            results[0]["locations"][0]);
  EXPECT_EQ(Json({{"physicalLocation", {{"artifactLocation", {{"uri", "other.plist"}}}}}}),
            results[1]["locations"][0]);
}

TEST(LintSarifReportTest, WhatIsNotKeptIsCounted) {
  Findings findings;
  for (int i = 0; i < 21; ++i) findings.add(rule("HF119"), {"f", std::nullopt, 1}, "again");

  const Json run = sarifOf(findings)["runs"][0];

  EXPECT_EQ(Json({{"dropped", {{"HF119", 1}}}}), run["properties"]);
  EXPECT_EQ(20U, run["results"].size());
  EXPECT_EQ(Json({{"dropped", Json::object()}}), sarifOf(Findings())["runs"][0]["properties"]);
}

TEST(LintSarifReportTest, MessagesHoldNeitherPlaceholdersNorLinks) {
  Findings findings;
  findings.add(rule("HF117"), {"f", std::nullopt, 1}, "${a} [b](http://c) \\d");

  const Json run = sarifOf(findings)["runs"][0];

  EXPECT_EQ("${{a}} \\[b\\](http://c) \\\\d", run["results"][0]["message"]["text"]);
  for (const Json& one : run["tool"]["driver"]["rules"])
    if (one["id"] == "HF314") {
      EXPECT_EQ("The uninstall manifest holds ${{installer.root}}.",
                one["shortDescription"]["text"]);
    }
}

TEST(LintSarifReportTest, BytesBeyondAsciiAreEscapedInUris) {
  Findings findings;
  findings.add(rule("HF116"), {"/\xE9?#", std::nullopt, std::nullopt}, "m");

  EXPECT_EQ("file:///%E9%3F%23", sarifOf(findings)["runs"][0]["results"][0]["locations"][0]
                                                  ["physicalLocation"]["artifactLocation"]["uri"]);
}

}  // namespace
}  // namespace installer::ctl::lint::test
