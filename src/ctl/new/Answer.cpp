#include "ctl/new/Answer.h"

#include <optional>
#include <string_view>
#include <vector>

#include "ctl/Shown.h"
#include "ctl/lint/Report.h"
#include "hotfix/base/Path.h"

namespace installer::ctl::package {

namespace {

constexpr std::size_t kMeanings = 14;  // the column

std::string packageOf(const Wanted& wanted) {
  return path::appendingComponent(wanted.folder, wanted.package());
}

std::optional<std::string> siteOf(const Wanted& wanted) {
  if (!wanted.site) return std::nullopt;
  return path::appendingComponent(wanted.folder, wanted.sitePlace());
}

std::string listed(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + shown(text);
  return list.empty() ? "none" : list;
}

std::vector<std::string> featuresOf(const Wanted& wanted) {
  std::vector<std::string> features;
  for (const Feature& feature : wanted.features)
    features.push_back(feature.id + "_" + feature.version);
  return features;
}

}  // namespace

std::string textOf(const Wanted& wanted, const Outcome& outcome, const Style& style) {
  const std::string findings = lint::textOf(outcome.findings, style);
  if (!outcome.isMade) return findings;
  const ctl::Layout layout{style.width, kMeanings};
  return entry("Package", shown(packageOf(wanted)), layout) +
         entry("Update site", shown(siteOf(wanted), "none"), layout) +
         entry("Features", listed(featuresOf(wanted)), layout) +
         entry("Key stores", listed(outcome.keyStores), layout) + findings;
}

Json jsonOf(const Wanted& wanted, const Outcome& outcome) {
  Json features = Json::array();
  for (const Feature& feature : wanted.features)
    features.push_back({{"id", feature.id}, {"version", feature.version}});
  return {{"schema", "hotfixctl/new/1"},
          {"made", outcome.isMade},
          {"folder", wanted.folder},
          {"package", packageOf(wanted)},
          {"updateSite", ctl::jsonOf(siteOf(wanted))},
          {"bundle", wanted.bundleName},
          {"version", wanted.version},
          {"identifier", wanted.identifier},
          {"features", features},
          {"keyStores", outcome.keyStores},
          {"lint", lint::jsonOf(packageOf(wanted), outcome.findings)}};
}

}  // namespace installer::ctl::package
