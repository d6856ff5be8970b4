#include "ctl/lint/Report.h"
#include "ctl/lint/RuleTable.h"

namespace installer::ctl::lint {

namespace {

Json jsonOf(const Place& place) {
  Json json = {{"file", place.file}};
  json["key"] = ctl::jsonOf(place.key);
  json["line"] = place.line ? Json(*place.line) : Json(nullptr);
  return json;
}

Json jsonOf(const Rule& rule) {
  return {{"rule", rule.id},
          {"level", wordOf(rule.level)},
          {"sentence", rule.sentence},
          {"remedy", rule.remedy},
          {"explanation", rule.explanation}};
}

Json jsonOf(const Finding& finding) {
  return {{"rule", finding.rule->id},
          {"level", wordOf(finding.rule->level)},
          {"place", jsonOf(finding.place)},
          {"message", finding.message},
          {"remedy", finding.rule->remedy}};
}

}  // namespace

Json jsonOf(const std::string& package, const Findings& findings) {
  Json json = {{"schema", "hotfixctl/lint/1"}, {"package", package}};
  json["errors"] = findings.count(Level::error);
  json["warnings"] = findings.count(Level::warning);
  json["notes"] = findings.count(Level::note);
  json["findings"] = Json::array();
  for (const Finding& finding : findings.kept()) json["findings"].push_back(jsonOf(finding));
  json["dropped"] = Json::object();
  for (const auto& [id, count] : findings.dropped()) json["dropped"][std::string(id)] = count;
  return json;
}

Json jsonOfRules() {
  Json json = {{"schema", "hotfixctl/lint-rules/1"}, {"rules", Json::array()}};
  for (const Rule& rule : kRules) json["rules"].push_back(jsonOf(rule));
  return json;
}

}  // namespace installer::ctl::lint
