#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "ctl/lint/Files.h"
#include "ctl/lint/Keys.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "ctl/lint/Texts.h"
#include "hotfix/base/Path.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"

namespace installer::ctl::lint {

namespace {

constexpr std::array kKeyStoreEnds{".jks", ".jceks", ".p12", ".pfx"};

bool looksLikeKeyStore(const std::string& name) {
  const std::string small = inSmallLetters(name);
  return small.find("keystore") != std::string::npos ||
         small.find("truststore") != std::string::npos ||
         std::any_of(kKeyStoreEnds.begin(), kKeyStoreEnds.end(),
                     [&](const char* end) { return small.ends_with(end); });
}

void lintKeyStore(const PackageView& package, const std::string& folder, const SeenEntry& entry,
                  Findings& findings) {
  const std::string file = path::appendingComponent(folder, entry.path);
  const bool isLink = entry.kind == SeenKind::link;
  if (isLink && !hasContent(package, file))
    findings.add(rule("HF505"), placeOf(file),
                 fmt::format("The link to {} is copied as that link.", entry.target));
  if (entry.kind == SeenKind::other || isFolder(file))
    findings.add(rule("HF504"), placeOf(file), "It is no file.");
  if (entry.kind == SeenKind::file && entry.size == 0)
    findings.add(rule("HF506"), placeOf(file), "It is empty.");
}

void lintVanishing(const std::vector<std::string>& brought, const std::string& rcpHome,
                   Findings& findings) {
  const std::string folder = InstanceLayout::deploy(rcpHome);
  for (const std::string& name : keyStoresIn(folder))
    if (!std::binary_search(brought.begin(), brought.end(), name))
      findings.add(rule("HF502"), placeOf(path::appendingComponent(folder, name)),
                   fmt::format("\"{}\" of the instance would be removed and not replaced.", name));
}

}  // namespace

void lintKeyStores(const PackageView& package, const std::optional<std::string>& rcpHome,
                   Findings& findings) {
  const std::string& folder = package.resolved.locations.keyStores;
  for (const SeenEntry& entry : entriesOf(folder)) {
    if (InstallUtil::hasPrefixCaseInsensitive(entry.path, ".keystore"))
      lintKeyStore(package, folder, entry, findings);
    else if (isFile(path::appendingComponent(folder, entry.path)) && looksLikeKeyStore(entry.path))
      findings.add(rule("HF503"), placeOf(path::appendingComponent(folder, entry.path)),
                   fmt::format("\"{}\" is no key store to the installer.", entry.path));
  }
  const std::vector<std::string> brought = keyStoresIn(folder);
  if (rcpHome) return lintVanishing(brought, *rcpHome, findings);
  if (brought.empty())
    findings.add(rule("HF501"), placeOf(folder),
                 "There is no key store here: the instance's own are removed.");
}

}  // namespace installer::ctl::lint
