// docs/files-and-codes.md promises exact names. What the code holds as a constant is compared with
// its tables in both directions; names that the code spells where it uses them must at least occur.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "base/TraceLine.h"
#include "hotfix/util/ErrorCode.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "platform/FixedPaths.h"
#include "platform/SystemLog.h"
#include "support/Proves.h"
#include "workflow/HotfixPackage.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

namespace installer {
namespace {

using Row = std::vector<std::string>;
using Table = std::vector<Row>;

std::string contentOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// The cells of a line such as "| a | b \| c |".
Row cellsOf(const std::string& line) {
  Row cells;
  std::string cell;
  for (std::size_t at = 1; at < line.size(); ++at) {
    if (line[at] == '\\' && at + 1 < line.size() && line[at + 1] == '|') {
      cell += line[++at];
    } else if (line[at] == '|') {
      cells.push_back(trimmed(cell));
      cell.clear();
    } else {
      cell += line[at];
    }
  }
  return cells;
}

std::string withoutBackquotes(const std::string& cell) {
  if (cell.size() < 2 || !cell.starts_with('`') || !cell.ends_with('`')) return cell;
  return cell.substr(1, cell.size() - 2);
}

// The rows of all tables of a document under one heading up to the next one, whose first cell is in
// backquotes.
Table tableIn(const std::string& document, const std::string& heading) {
  Table table;
  bool inside = false;
  std::istringstream lines(contentOf(HOTFIX_SOURCE_DIR "/" + document));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with('#')) inside = line.substr(line.find(' ') + 1) == heading;
    if (inside && line.starts_with("| `")) table.push_back(cellsOf(line));
  }
  EXPECT_FALSE(table.empty()) << "no table under " << heading;
  return table;
}

Table tableUnder(const std::string& heading) {
  return tableIn("docs/files-and-codes.md", heading);
}

std::vector<std::string> firstColumnOf(const Table& table) {
  std::vector<std::string> names;
  for (const Row& row : table) names.push_back(withoutBackquotes(row.at(0)));
  return names;
}

std::set<std::string> namesUnder(const std::string& heading) {
  const std::vector<std::string> names = firstColumnOf(tableUnder(heading));
  return {names.begin(), names.end()};
}

// Every source and header that ships, by its path below src/ or include/.
std::map<std::string, std::string> sources() {
  std::map<std::string, std::string> found;
  for (const fs::path root : {HOTFIX_SOURCE_DIR "/src", HOTFIX_SOURCE_DIR "/include"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      if (!entry.is_regular_file()) continue;
      found[fs::relative(entry.path(), root).string()] = contentOf(entry.path());
    }
  }
  return found;
}

std::string allSources() {
  std::string text;
  for (const auto& [path, content] : sources()) text += content;
  return text;
}

TEST(FilesAndCodesTest, FixedPlacesAreThoseOfTheProgram) {
  const FixedPaths paths;
  std::set<std::string> expected;
  FixedPaths::each(paths, [&](const char*, const std::string& path) { expected.insert(path); });

  EXPECT_EQ(namesUnder("Fixed places"), expected);
}

// What each function of the layout answers, as the document's table has it.
std::map<std::string, std::set<std::string>> layout() {
  using namespace InstanceLayout;
  const std::string home = "B/rcp";
  const std::string data = "<rcp data>";
  const std::string base = std::string(kBasePlugin) + "<version>";
  const auto below = [&](const std::string& place) { return place.substr(home.size() + 1); };
  const auto beside = [](const std::string& place) { return ".." + place.substr(1); };
  return {{"installInfo", {below(installInfo(home))}},
          {"addonInfo", {below(addonInfo(home))}},
          {"launcher", {below(launcher(home))}},
          {"launcherProperties", {below(launcherProperties(home))}},
          {"agentProperties", {below(agentProperties(home))}},
          {"customization", {below(customization(home))}},
          {"logCollectionTool", {below(logCollectionTool(home))}},
          {"defaultRcpData", {below(defaultRcpData(home))}},
          {"deploy", {below(deploy(home))}},
          {"deployed",
           {below(deployed(home, kUpdateManifest)), below(deployed(home, "install.<version>.xml")),
            below(deployed(home, ".keystore*"))}},
          {"installManifest", {below(installManifest(home))}},
          {"uninstallManifest", {below(uninstallManifest(home))}},
          {"jvmProperties", {below(jvmProperties(home))}},
          {"extras", {below(extras(home))}},
          {"installHistory", {below(installHistory(home))}},
          {"eclipse", {below(eclipse(home))}},
          {"links", {below(links(home))}},
          {"rcpLink", {below(rcpLink(home))}},
          {"sharedLink", {below(sharedLink(home))}},
          {"plugins", {below(plugins(home)), below(plugins(home)) + "/" + base}},
          {"baseCustomization", {below(baseCustomization(home, "<version>"))}},
          {"provisioningResult", {beside(provisioningResult(home))}},
          {"shared", {beside(shared(home))}},
          {"bundleInfo", {bundleInfo("<bundle>.app")}},
          {"workspaceFlag", {workspaceFlag(data)}},
          {"dataSettings", {dataSettings(data)}},
          {"workspaceLog", {workspaceLog(data)}}};
}

TEST(FilesAndCodesTest, InstanceHasTheDocumentedLayout) {
  const std::string header = sources().at("instance/InstanceLayout.h");
  const std::regex declared("\nstd::string (\\w+)\\(");
  std::set<std::string> functions;
  for (std::sregex_iterator at(header.begin(), header.end(), declared), end; at != end; ++at)
    functions.insert((*at)[1]);

  std::set<std::string> answering;
  std::set<std::string> places;
  for (const auto& [function, answers] : layout()) {
    answering.insert(function);
    places.insert(answers.begin(), answers.end());
  }
  EXPECT_EQ(answering, functions);
  EXPECT_EQ(namesUnder("The instance"), places);
}

TEST(FilesAndCodesTest, PackageKeepsItsDescriptionInTheDocumentedFile) {
  EXPECT_EQ(HotfixPackage::propertiesFile("P"),
            "P/" + firstColumnOf(tableUnder("The package")).front());
}

TEST(FilesAndCodesTest, DefaultPlacesOfThePackageAreThoseOfTheWorkflow) {
  proves("PACKAGE-5");
  const std::set<std::string> beside = namesUnder("The package");
  std::set<std::string> documented;
  for (const Row& row : tableUnder("hotfix.plist")) {
    const std::string value = withoutBackquotes(row.at(2));
    if (!value.starts_with("${package}/")) continue;
    EXPECT_THAT(beside, Contains(value.substr(std::string("${package}/").size())));
    documented.insert(value);
  }

  const ResolvedPackage::Locations defaults =
      HotfixPackage::resolvedFor("${package}", {}).locations;
  EXPECT_THAT(documented, UnorderedElementsAre(defaults.installManifest, defaults.uninstallManifest,
                                               defaults.customization, defaults.updateSites));
}

TEST(FilesAndCodesTest, DocumentedKeysAreSpelledInTheCode) {
  const std::string code = allSources();
  for (const char* const heading :
       {"hotfix.plist", "installInfo.plist", "rcplauncher.properties and rcpinstall.properties",
        ".provisioning_rc", "eclipse/links/rcp.link and shared.link", "addonInfo.plist",
        "framework.plist", "Internal configuration", "Bundle property lists", "Error record",
        "Manifests", "Preferences", "Environment"}) {
    for (const std::string& name : namesUnder(heading)) {
      EXPECT_THAT(code, HasSubstr('"' + name + '"')) << "under " << heading;
    }
  }
}

TEST(FilesAndCodesTest, HotfixStartHasTheDocumentedArguments) {
  proves("LAUNCH-1");
  const Table table = tableUnder("The launcher");

  EXPECT_THAT(firstColumnOf(table), ElementsAreArray(ProvisioningCommand::hotfixArguments(
                                        "<locale>", "<update sites>", "<rcp data>")));
  for (const Row& row : table) EXPECT_EQ(row.at(3), "yes") << row.at(0);
}

TEST(FilesAndCodesTest, UpdateAndCleanUpStartsHaveTheDocumentedArguments) {
  std::vector<std::string> withData[2];
  std::vector<std::string> withoutData[2];
  for (const Row& row : tableUnder("The launcher")) {
    for (const std::size_t column : {0U, 1U}) {
      const std::string& cell = row.at(column + 1);
      if (cell == "no") continue;
      const std::string argument =
          withoutBackquotes(cell == "`cleanup` instead" ? "`cleanup`" : row.at(0));
      withData[column].push_back(argument);
      if (cell != "when known") withoutData[column].push_back(argument);
    }
  }

  using ProvisioningCommand::arguments;
  EXPECT_EQ(withData[0], arguments(ProvisioningCommand::kUpdate, "<locale>", "<rcp data>"));
  EXPECT_EQ(withData[1], arguments(ProvisioningCommand::kCleanUp, "<locale>", "<rcp data>"));
  EXPECT_EQ(withoutData[0], arguments(ProvisioningCommand::kUpdate, "<locale>", std::nullopt));
  EXPECT_EQ(withoutData[1], arguments(ProvisioningCommand::kCleanUp, "<locale>", std::nullopt));
}

// The texts of a source that begin with a hyphen, in their order.
std::vector<std::string> optionsIn(const std::string& source) {
  static const std::regex option("\"(-[^\"]*)\"");
  std::vector<std::string> found;
  for (std::sregex_iterator at(source.begin(), source.end(), option), end; at != end; ++at)
    found.push_back((*at)[1]);
  return found;
}

TEST(FilesAndCodesTest, ToolsAreStartedWithTheDocumentedOptionsAndNoOthers) {
  proves("COLLECT-2");
  const auto files = sources();

  EXPECT_EQ(optionsIn(files.at("instance/LogCollection.cpp")),
            firstColumnOf(tableUnder("Log collection")));
  EXPECT_EQ(optionsIn(files.at("util/InstallUtilFiles.cpp")),
            firstColumnOf(tableUnder("Receipts")));
}

// --- Error codes ---------------------------------------------------------------------------------

std::string numberOf(ErrorCode code) {
  return std::to_string(static_cast<int>(code));
}

TEST(FilesAndCodesTest, EveryErrorCodeIsDescribedOnceAndNoneIsRetired) {
  std::set<int> numbers(kRetiredErrorCodes.begin(), kRetiredErrorCodes.end());
  for (const ErrorDescription& error : kErrors)
    EXPECT_TRUE(numbers.insert(static_cast<int>(error.code)).second) << numberOf(error.code);

  const std::string header = sources().at("hotfix/util/ErrorCode.h");
  const std::regex enumerator("\n  (\\w+) = ([0-9]+),");
  std::set<std::string> described;
  for (const ErrorDescription& error : kErrors) described.insert(numberOf(error.code));
  std::set<std::string> declared;
  for (std::sregex_iterator at(header.begin(), header.end(), enumerator), end; at != end; ++at)
    declared.insert((*at)[2]);
  EXPECT_EQ(declared, described);
}

// Whether a source makes a code of a number, which need not be one that the header describes.
bool makesErrorCodesOfNumbers(const std::string& source) {
  static const std::regex cast(
      "_cast<[^>]*\\bErrorCode\\b|\\bErrorCode\\s*\\w*\\s*\\{|"
      "\\bErrorCode\\s*\\(|\\(\\s*ErrorCode\\s*\\)");
  return std::regex_search(source, cast);
}

TEST(FilesAndCodesTest, NoErrorCodeIsMadeOfANumber) {
  for (const char* const cast :
       {"static_cast<ErrorCode>(5)", "bit_cast<const installer::ErrorCode>(five)", "ErrorCode(5)",
        "ErrorCode{5}", "ErrorCode code{5};", "(ErrorCode)5", "reinterpret_cast<ErrorCode&>(five)"})
    EXPECT_TRUE(makesErrorCodesOfNumbers(cast)) << cast;
  for (const char* const other :
       {"enum class ErrorCode : int {", "void send(ErrorCode code) {", "static_cast<int>(code)"})
    EXPECT_FALSE(makesErrorCodesOfNumbers(other)) << other;

  for (const auto& [path, text] : sources()) EXPECT_FALSE(makesErrorCodesOfNumbers(text)) << path;
}

// The operation that sends takes nothing but the codes, and nobody else makes a record. The
// companion program only reads what was sent.
TEST(FilesAndCodesTest, EveryErrorCodeIsSent) {
  const std::regex used("ErrorCode::(\\w+)");
  std::set<std::string> described;
  std::set<std::string> sent;
  std::set<std::string> makers;
  for (const auto& [path, text] : sources()) {
    if (path.starts_with("ctl/")) continue;
    auto& codes = path == "hotfix/util/ErrorCode.h" ? described : sent;
    for (std::sregex_iterator at(text.begin(), text.end(), used), end; at != end; ++at)
      codes.insert((*at)[1]);
    if (text.find("\"ERROR_CODE\"") != std::string::npos) makers.insert(path);
  }

  EXPECT_EQ(sent, described);
  EXPECT_EQ(makers, (std::set<std::string>{"util/InstallUtilErrors.cpp"}));
}

// "1, 2 and 5", the retired codes as a sentence lists them.
std::string retiredCodes() {
  std::string list;
  for (std::size_t at = 0; at < kRetiredErrorCodes.size(); ++at) {
    const bool last = at + 1 == kRetiredErrorCodes.size();
    if (at != 0) list += last ? " and " : ", ";
    list += std::to_string(kRetiredErrorCodes[at]);
  }
  return list;
}

TEST(FilesAndCodesTest, DocumentNamesTheRetiredErrorCodes) {
  EXPECT_THAT(contentOf(HOTFIX_SOURCE_DIR "/docs/files-and-codes.md"),
              HasSubstr("\n" + retiredCodes() + " are retired and never sent.\n"));
}

TEST(FilesAndCodesTest, TablesDescribeTheErrorCodesAsTheHeaderDoes) {
  Table full;
  Table brief;
  for (const ErrorDescription& error : kErrors) {
    const std::string number = "`" + numberOf(error.code) + "`";
    const std::string meaning(error.meaning);
    const std::string details(error.details);
    full.push_back({number, meaning, std::string(error.sender), details});
    brief.push_back({number, meaning, details});
  }

  EXPECT_EQ(tableUnder("Error codes"), full);
  EXPECT_EQ(tableIn("README.md", "Error codes"), brief);
}

TEST(FilesAndCodesTest, ManualPageDescribesTheErrorCodesAsTheHeaderDoes) {
  std::string expected;
  for (const ErrorDescription& error : kErrors) {
    std::string meaning(error.meaning);
    meaning.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(meaning.front())));
    expected += ".TP .B " + numberOf(error.code) + " " + meaning +
                ". Details: " + std::string(error.details) + ". ";
  }
  std::string page = contentOf(HOTFIX_SOURCE_DIR "/packaging/HotfixInstaller.8");
  std::replace(page.begin(), page.end(), '\n', ' ');

  EXPECT_THAT(page, HasSubstr(" " + expected + ".PP Codes " + retiredCodes() + " are retired. "));
}

// What leads to each code in the flow chart: the question of the step that the arrow comes from,
// if it is one, and what the arrow says before the code.
std::map<std::string, std::string> arrowsToCodesIn(const std::string& chart) {
  static const std::regex question("(\\w+)\\{\"([^\"]*)\"\\}");
  static const std::regex arrow("(\\w+) -- \"([^\"]*): code ([0-9]+)\"");
  std::map<std::string, std::string> questions;
  for (std::sregex_iterator at(chart.begin(), chart.end(), question), end; at != end; ++at)
    questions[(*at)[1]] = std::string((*at)[2]) + " ";
  std::map<std::string, std::string> arrows;
  for (std::sregex_iterator at(chart.begin(), chart.end(), arrow), end; at != end; ++at)
    EXPECT_TRUE(arrows.emplace((*at)[3], questions[(*at)[1]] + std::string((*at)[2])).second);
  return arrows;
}

TEST(FilesAndCodesTest, FlowChartTellsWhenEachErrorCodeIsSent) {
  const std::string readme = contentOf(HOTFIX_SOURCE_DIR "/README.md");
  const std::size_t begin = readme.find("```mermaid");
  const std::string chart = readme.substr(begin, readme.find("\n```\n", begin) - begin);
  const std::map<std::string, std::string> expected = {
      {numberOf(ErrorCode::unsupportedCharacters), "unsupported character in a path? yes"},
      {numberOf(ErrorCode::manifestNotCopied), "manifest missing or not copied"},
      {numberOf(ErrorCode::applicationRunning), "application running? yes"},
      {numberOf(ErrorCode::higherHotfixInstalled), "higher hotfix installed? yes"},
      {numberOf(ErrorCode::notInstalled), "instance installed? no"}};

  EXPECT_EQ(arrowsToCodesIn(chart), expected);
  EXPECT_EQ(expected.size() + 1, kErrors.size()) << "all but the one of the start";
  EXPECT_THAT(chart,
              HasSubstr("reset the error record to code " + numberOf(ErrorCode::none) + "\"]"));
}

TEST(FilesAndCodesTest, DocumentedCharactersAndNoOthersAreRefused) {
  proves("CHECK-2");
  const std::set<std::string> refused = namesUnder("Characters that no path may hold");
  for (char one = ' '; one <= '~'; ++one) {
    const std::string character(1, one);

    EXPECT_EQ(InstallUtil::containUnSupportedCharacters("/a" + character + "b"),
              refused.contains(character))
        << character;
  }
}

TEST(FilesAndCodesTest, LogLevelsHaveTheDocumentedNumbersAndNames) {
  proves("LOG-2");
  const Table table = tableUnder("Log levels");
  EXPECT_EQ(namesUnder("Log levels"), (std::set<std::string>{"3", "4", "5", "6"}));
  for (const Row& row : table) {
    TraceLine line;
    line.time.tm_mday = 1;
    line.level = static_cast<LogLevel>(std::stoi(withoutBackquotes(row.at(0))));

    LineText text;
    appendFormatted(line, text);

    EXPECT_THAT(std::string(viewOf(text)), HasSubstr(" <" + withoutBackquotes(row.at(1)) + ">: "));
  }
}

TEST(FilesAndCodesTest, TablesHoldNoNameTwice) {
  for (const char* const heading :
       {"Fixed places", "The package", "hotfix.plist", "The instance", "installInfo.plist"}) {
    const std::vector<std::string> names = firstColumnOf(tableUnder(heading));

    EXPECT_EQ(names.size(), namesUnder(heading).size()) << heading;
  }
}

}  // namespace
}  // namespace installer
