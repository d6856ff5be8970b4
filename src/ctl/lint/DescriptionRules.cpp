#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "ctl/Nearest.h"
#include "ctl/lint/Keys.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "ctl/lint/Texts.h"
#include "hotfix/base/Path.h"
#include "hotfix/util/InstallUtil.h"

namespace installer::ctl::lint {

namespace {

using PropertyList::Value;

constexpr std::array<std::string_view, 7> kNoWords{"", "0", "n", "no", "f", "false", "off"};
constexpr std::array<std::string_view, 4> kYesWords{"y", "yes", "t", "true"};

// A description has a dozen keys; each that is looked up costs a search through the file.
constexpr std::size_t kMostUnknownKeys = 100;

bool isOneOf(const auto& words, const std::string& text) {
  const std::string word = inSmallLetters(withoutBlanks(text));
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string_view kindOf(const Value& value) {
  struct Name {
    std::string_view operator()(const std::string&) const { return "a text"; }
    std::string_view operator()(bool) const { return "a boolean"; }
    std::string_view operator()(std::int64_t) const { return "a number"; }
    std::string_view operator()(std::uint64_t) const { return "a number"; }
    std::string_view operator()(double) const { return "a number"; }
    std::string_view operator()(const PropertyList::Data&) const { return "data"; }
    std::string_view operator()(const PropertyList::Date&) const { return "a date"; }
    std::string_view operator()(const PropertyList::Uid&) const { return "a reference"; }
    std::string_view operator()(const PropertyList::Array&) const { return "an array"; }
    std::string_view operator()(const PropertyList::Dictionary&) const { return "a dictionary"; }
  };
  return std::visit(Name{}, value.storage());
}

// --- Keys ----------------------------------------------------------------------------------------

void lintUnknownKey(const PackageView& package, const std::string& key, Findings& findings) {
  const auto meant = nearest(key, {kKnownKeys.begin(), kKnownKeys.end()});
  if (meant && package.entries.find(*meant) == nullptr)
    return findings.add(
        rule("HF110"), package.at(key),
        fmt::format("\"{}\" is no key of the installer; \"{}\" is meant.", key, *meant));
  findings.add(rule("HF111"), package.at(key),
               fmt::format("\"{}\" is no key of the installer and passed over.", key));
}

void lintKeys(const PackageView& package, Findings& findings) {
  std::size_t unknown = 0;
  for (const auto& [key, value] : package.entries)
    if (!isKnownKey(key) && ++unknown <= kMostUnknownKeys) lintUnknownKey(package, key, findings);
  for (const auto& [key, count] : package.listKeys)
    if (count > 1 && isKnownKey(key))
      findings.add(rule("HF121"), package.at(key),
                   fmt::format("\"{}\" stands {} times; the last one counts.", key, count));
}

// --- Values --------------------------------------------------------------------------------------

void lintText(const PackageView& package, std::string_view key, Findings& findings) {
  const Value* const value = package.entries.find(key);
  if (value == nullptr) return;
  const std::string* const text = value->as<std::string>();
  const bool* const truth = value->as<bool>();
  const bool isMeantAsItCounts = key == kSkipRunningCheck && truth != nullptr && !*truth;
  if (isMeantAsItCounts) return;
  if (text == nullptr)
    return findings.add(
        rule("HF112"), package.at(key),
        fmt::format("{} is {} and counts as missing: it must be a text.", key, kindOf(*value)));
  if (withoutBlanks(*text) != *text)
    findings.add(rule("HF116"), package.at(key),
                 fmt::format("{} is \"{}\", with a blank at its beginning or end.", key, *text));
  if (const auto placeholder = unknownPlaceholder(*text, kPackageVariable); !placeholder.empty())
    findings.add(rule("HF117"), package.at(key),
                 fmt::format("{} holds \"{}\", which stays as it is; only {} is replaced.", key,
                             placeholder, kPackageVariable));
}

void lintTruth(const PackageView& package, Findings& findings) {
  const Value* const value = package.entries.find(kAllowMultiInstance);
  const bool truth = package.described.allowMultiInstance;
  const bool isPlain = value == nullptr || value->as<bool>() != nullptr ||
                       value->as<std::int64_t>() != nullptr ||
                       value->as<std::uint64_t>() != nullptr || value->as<double>() != nullptr;
  const std::string* const text = isPlain ? nullptr : value->as<std::string>();
  const std::string told = text ? "\"" + *text + "\"" : isPlain ? "" : std::string(kindOf(*value));
  if (!isPlain && !truth && (text == nullptr || !isOneOf(kNoWords, *text)))
    return findings.add(rule("HF113"), package.at(kAllowMultiInstance),
                        fmt::format("allowMultiInstance is {}, which counts as false.", told));
  const bool isNumber =
      text != nullptr && text->find_first_not_of("0123456789") == std::string::npos;
  if (text != nullptr && truth && !isNumber && !isOneOf(kYesWords, *text))
    findings.add(rule("HF114"), package.at(kAllowMultiInstance),
                 fmt::format("allowMultiInstance is {}, which counts as true.", told));
  if (!truth)
    findings.add(rule("HF122"), package.at(kAllowMultiInstance),
                 "allowMultiInstance is not true: where the product is registered, the registered "
                 "application is patched.");
}

void lintSkipping(const PackageView& package, Findings& findings) {
  const auto text = PropertyList::textForKey(package.entries, kSkipRunningCheck);
  if (!text || *text == "true" || isOneOf(kNoWords, *text)) return;
  findings.add(rule("HF115"), package.at(kSkipRunningCheck),
               fmt::format("SKIPRUNNINGCHECK is \"{}\", which counts as no; only \"true\", to the "
                           "letter, counts as yes.",
                           *text));
}

// --- What they mean ------------------------------------------------------------------------------

void lintBundleName(const PackageView& package, Findings& findings) {
  const auto& name = package.described.bundleName;
  if (!name) {
    if (package.entries.find(kBundleName) == nullptr)
      findings.add(rule("HF103"), package.list(), "bundleName is missing.");
    return;
  }
  if (name->empty() || inSmallLetters(*name).ends_with(".app") ||
      name->find('/') != std::string::npos)
    findings.add(rule("HF104"), package.at(kBundleName),
                 fmt::format("bundleName \"{0}\" means the application \"{0}.app\".", *name));
}

void lintFrameworkPath(const PackageView& package, Findings& findings) {
  const auto& way = package.described.frameworkPath;
  if (!way) {
    if (package.entries.find(kFrameworkPath) == nullptr)
      findings.add(rule("HF105"), package.list(), "frameworkPath is missing.");
    return;
  }
  if (path::lastComponent(*way) == "rcp")
    findings.add(rule("HF106"), package.at(kFrameworkPath),
                 fmt::format("frameworkPath \"{0}\" means the rcp home \"{0}/rcp\".", *way));
  if (leavesItsRoot(*way))
    findings.add(rule("HF107"), package.at(kFrameworkPath),
                 fmt::format("frameworkPath \"{}\" leads out of the bundle.", *way));
}

void lintVariables(const PackageView& package, std::string_view key,
                   const std::optional<std::string>& before,
                   const std::optional<std::string>& after, Findings& findings) {
  if (before == after) return;
  findings.add(rule("HF118"), package.at(key),
               fmt::format("{} is \"{}\" to the checks and \"{}\" to the installation.", key,
                           before.value_or(""), after.value_or("")));
}

void lintCharacters(const PackageView& package, std::string_view key,
                    const std::optional<std::string>& text, Findings& findings) {
  if (!InstallUtil::containUnSupportedCharacters(text)) return;
  findings.add(rule("HF802"), package.at(key),
               fmt::format("{} \"{}\" holds a character that paths may not hold.", key, *text));
}

}  // namespace

void lintDescription(const PackageView& package, Findings& findings) {
  const HotfixPackage& described = package.described;
  const HotfixPackage& resolved = package.resolved;
  lintKeys(package, findings);
  for (const std::string_view key : kKnownKeys)
    if (key != kAllowMultiInstance) lintText(package, key, findings);
  lintBundleName(package, findings);
  lintFrameworkPath(package, findings);
  lintTruth(package, findings);
  lintSkipping(package, findings);
  lintVariables(package, kBundleName, described.bundleName, resolved.bundleName, findings);
  lintVariables(package, kFrameworkPath, described.frameworkPath, resolved.frameworkPath, findings);
  lintVariables(package, kVersion, described.version, resolved.version, findings);
  lintCharacters(package, kBundleName, described.bundleName, findings);
  lintCharacters(package, kFrameworkPath, described.frameworkPath, findings);
}

}  // namespace installer::ctl::lint
