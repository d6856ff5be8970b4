#include "ctl/report/ReportText.h"

#include <fmt/format.h>

#include "ctl/Shown.h"

namespace installer::ctl::report {

namespace {

std::string_view plural(std::size_t number) {
  return number == 1 ? "machine" : "machines";
}

Json namesOf(const Group& group, const Fleet& fleet) {
  Json names = Json::array();
  for (const std::size_t machine : group.machines) names.push_back(fleet.machines[machine].name);
  return names;
}

}  // namespace

std::string textOf(const Fleet& fleet, const std::string& page, const Style& style) {
  constexpr std::size_t kMeanings = 12;
  const Layout layout{style.width, kMeanings};
  std::string text;
  for (const Group& group : fleet.versions)
    text += entry(fmt::format("{:>8}", group.machines.size()),
                  fmt::format("with hotfix {}", shown(group.name)), layout);
  for (const Group& group : fleet.failures)
    text += entry(fmt::format("{:>8}", group.machines.size()),
                  style.bad(fmt::format("failed: {}", shown(group.name))), layout);
  const std::size_t count = fleet.machines.size();
  return text +
         broken(fmt::format("{} {} in {}", count, plural(count), shown(page)), {style.width, 0});
}

Json documentOf(const Fleet& fleet, const std::vector<LeftOut>& leftOut, const std::string& page,
                int status) {
  Json versions = Json::array();
  for (const Group& group : fleet.versions)
    versions.push_back({{"version", group.name}, {"machines", group.machines.size()}});
  Json failures = Json::array();
  for (const Group& group : fleet.failures)
    failures.push_back({{"cause", group.name},
                        {"meaning", wordsOf(group.name).meaning},
                        {"remedy", wordsOf(group.name).remedy},
                        {"machines", namesOf(group, fleet)}});
  Json findings = Json::array();
  for (const Group& group : fleet.findings)
    findings.push_back({{"name", group.name}, {"machines", namesOf(group, fleet)}});
  Json lacks = Json::array();
  for (const LeftOut& one : leftOut) lacks.push_back({{"path", one.path}, {"reason", one.reason}});
  return {{"schema", "hotfixctl/report/1"},
          {"status", status},
          {"report", page},
          {"machines", fleet.machines.size()},
          {"versions", std::move(versions)},
          {"failures", std::move(failures)},
          {"findings", std::move(findings)},
          {"notRead", std::move(lacks)}};
}

}  // namespace installer::ctl::report
