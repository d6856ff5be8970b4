#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>

#include "ctl/lint/Keys.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"

namespace installer::ctl::lint {

namespace {

constexpr std::string_view kDigits = "0123456789";
// A longer number is a date or another stamp, which has as many digits in every version.
constexpr std::size_t kLongestCount = 3;

// A version that is lower by its numbers and sorts higher as a text: that with the last number of
// one digit less. nullopt where each number may well have as many digits in all versions.
std::optional<std::string> lowerVersionThatSortsHigher(const std::string& version) {
  for (std::size_t at = version.find_first_of(kDigits); at != std::string::npos;
       at = version.find_first_of(kDigits, at)) {
    const std::size_t end = std::min(version.find_first_not_of(kDigits, at), version.size());
    const std::size_t count = end - at;
    if (count > 1 && count <= kLongestCount && version[at] != '0')
      return version.substr(0, at) + std::string(count - 1, '9');
    at = end;
  }
  return std::nullopt;
}

}  // namespace

void lintVersion(const PackageView& package, bool hasOlder, Findings& findings) {
  const auto& version = package.described.version;
  if (!version) {
    if (package.entries.find(kVersion) == nullptr)
      findings.add(rule("HF108"), package.list(), "version is missing: nothing is recorded.");
    return;
  }
  if (version->empty()) findings.add(rule("HF109"), package.at(kVersion), "version is empty.");
  if (hasOlder) return;  // with which the version is compared itself
  if (const auto lower = lowerVersionThatSortsHigher(*version))
    findings.add(
        rule("HF119"), package.at(kVersion),
        fmt::format("Version \"{}\" sorts before \"{}\" as a text and is refused where that "
                    "is installed.",
                    *version, *lower));
}

}  // namespace installer::ctl::lint
