#include <string>

#include "ctl/lint/Report.h"
#include "ctl/lint/RuleTable.h"
#include "hotfix/Version.h"

namespace installer::ctl::lint {

namespace {

constexpr const char* kSchema =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";

bool isPlain(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || std::string_view("/-._~").find(byte) != std::string::npos;
}

// A path as a URI; a relative one stays relative.
std::string uriOf(const std::string& path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = path.starts_with('/') ? "file://" : "";
  for (const char byte : path) {
    const auto number = static_cast<unsigned char>(byte);
    if (isPlain(byte))
      uri += byte;
    else
      uri.append({'%', kDigits[number >> 4U], kDigits[number & 15U]});
  }
  return uri;
}

// A message as it stands: braces would begin a placeholder there, and brackets a link.
Json messageOf(std::string_view text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '{' || letter == '}') escaped += letter;
    if (letter == '[' || letter == ']' || letter == '\\') escaped += '\\';
    escaped += letter;
  }
  return {{"text", escaped}};
}

Json sarifOf(const Place& place) {
  Json location = {{"physicalLocation", {{"artifactLocation", {{"uri", uriOf(place.file)}}}}}};
  if (place.line) location["physicalLocation"]["region"] = {{"startLine", *place.line}};
  if (place.key) location["logicalLocations"] = Json::array({{{"name", *place.key}}});
  return location;
}

Json sarifOf(const Rule& rule) {
  return {{"id", rule.id},
          {"shortDescription", messageOf(rule.sentence)},
          {"fullDescription", messageOf(rule.explanation)},
          {"help", messageOf(rule.remedy)},
          {"defaultConfiguration", {{"level", wordOf(rule.level)}}}};
}

// The rule's place in the table, by which results name it.
std::size_t indexOf(const Rule& rule) {
  return static_cast<std::size_t>(&rule - std::begin(kRules));
}

Json sarifOf(const Finding& finding) {
  return {{"ruleId", finding.rule->id},
          {"ruleIndex", indexOf(*finding.rule)},
          {"level", wordOf(finding.rule->level)},
          {"message", messageOf(finding.message)},
          {"locations", Json::array({sarifOf(finding.place)})}};
}

}  // namespace

Json sarifOf(const Findings& findings) {
  Json rules = Json::array();
  for (const Rule& rule : kRules) rules.push_back(sarifOf(rule));
  Json results = Json::array();
  for (const Finding& finding : findings.kept()) results.push_back(sarifOf(finding));
  const Json driver = {{"name", "hotfixctl"}, {"version", kVersion}, {"rules", rules}};
  Json dropped = Json::object();
  for (const auto& [id, count] : findings.dropped()) dropped[std::string(id)] = count;
  const Json run = {
      {"tool", {{"driver", driver}}}, {"results", results}, {"properties", {{"dropped", dropped}}}};
  return {{"$schema", kSchema}, {"version", "2.1.0"}, {"runs", Json::array({run})}};
}

}  // namespace installer::ctl::lint
