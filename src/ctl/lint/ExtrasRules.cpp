#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/Characters.h"
#include "base/LetterCase.h"
#include "ctl/lint/Files.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "ctl/lint/Texts.h"
#include "hotfix/base/Path.h"
#include "instance/InstanceLayout.h"

namespace installer::ctl::lint {

namespace {

using path::appendingComponent;

bool isUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const auto character = decodeUtf8(text, at);
    if (!character) return false;
    at += character->length;
  }
  return true;
}

bool isLeftBehind(const std::string& name) {
  constexpr std::array kNames{".DS_Store", "Thumbs.db", "desktop.ini", ".git",
                              ".svn",      ".hg",       "CVS",         "__MACOSX"};
  return std::find(kNames.begin(), kNames.end(), name) != kNames.end() || name.starts_with("._") ||
         name.ends_with("~") || name.ends_with(".swp");
}

void lintLink(const std::string& folder, const SeenEntry& entry, Findings& findings) {
  const std::string link = appendingComponent(folder, entry.path);
  const std::string way = path::deletingLastComponent(entry.path) + "/" + entry.target;
  if (entry.target.starts_with('/') || leavesItsRoot(way) || !exists(link))
    findings.add(rule("HF601"), placeOf(link), fmt::format("It is a link to {}.", entry.target));
}

void lintEntry(const std::string& folder, const SeenEntry& entry, Findings& findings) {
  const Place place = placeOf(appendingComponent(folder, entry.path));
  if (entry.kind == SeenKind::link) lintLink(folder, entry, findings);
  if (entry.kind == SeenKind::other)
    findings.add(rule("HF602"), place, "It is neither a file nor a folder nor a link.");
  if (!isUtf8(entry.path)) findings.add(rule("HF605"), place, "Its name is not UTF-8.");
  if (isLeftBehind(path::lastComponent(entry.path)))
    findings.add(rule("HF607"), place, "It would be copied, too.");
}

// Names that are one name to disks that care for neither case nor form.
void lintNames(const std::string& folder, const std::vector<SeenEntry>& entries,
               Findings& findings) {
  std::map<std::string, const SeenEntry*> seen;
  for (const SeenEntry& entry : entries) {
    const auto [other, isFirst] = seen.emplace(letterCase::withoutCaseAndForm(entry.path), &entry);
    if (isFirst) continue;
    const bool differInForm =
        letterCase::composed(entry.path) == letterCase::composed(other->second->path);
    findings.add(differInForm ? rule("HF604") : rule("HF603"),
                 placeOf(appendingComponent(folder, entry.path)),
                 fmt::format("\"{}\" and \"{}\" are one name to a disk of macOS.",
                             other->second->path, entry.path));
  }
}

// What would take the place of a folder.
void lintReplaced(const std::string& folder, const std::vector<SeenEntry>& entries,
                  const std::string& target, Findings& findings) {
  for (const SeenEntry& entry : entries) {
    const std::string item = appendingComponent(folder, entry.path);
    const std::string replaced = appendingComponent(target, entry.path);
    if (!isFolder(item) && isFolder(replaced))
      findings.add(rule("HF609"), placeOf(item),
                   fmt::format("It would replace the folder {}.", replaced));
  }
}

}  // namespace

void lintExtras(const PackageView& package, const std::optional<std::string>& rcpHome,
                Findings& findings) {
  const std::string& folder = package.resolved.locations.extras;
  if (!isFolder(folder)) return;
  const auto seen = lookBelow(folder, kTreeLook);
  if (!seen || !seen->isWhole)
    findings.add(
        rule("HF608"), placeOf(folder),
        fmt::format(
            "It holds more than is looked at: {} entries, {} folders in one another, {} MiB "
            "of paths.",
            kMostEntries, kMostFolders, kTreeLook.pathBytes >> 20));
  if (!seen) return;
  if (seen->entries.empty()) findings.add(rule("HF606"), placeOf(folder), "The folder is empty.");
  for (const SeenEntry& entry : seen->entries) lintEntry(folder, entry, findings);
  lintNames(folder, seen->entries, findings);
  if (rcpHome) lintReplaced(folder, seen->entries, InstanceLayout::extras(*rcpHome), findings);
}

}  // namespace installer::ctl::lint
