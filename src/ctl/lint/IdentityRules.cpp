#include <fmt/format.h>

#include <optional>
#include <string>

#include "ctl/lint/Lines.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "ctl/lint/Texts.h"
#include "hotfix/base/PropertyList.h"
#include "instance/InstanceLayout.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::lint {

namespace {

constexpr std::string_view kIdentifier = "CFBundleIdentifier";
constexpr std::string_view kShortVersion = "CFBundleShortVersionString";

void lintIdentifier(const PropertyList::Dictionary& info, const std::string& file,
                    const std::string& bytes, Findings& findings) {
  const Place place{file, std::string(kIdentifier),
                    lineOfKey(bytes, rootKeysOf(bytes), kIdentifier)};
  const PropertyList::Value* const value = info.find(kIdentifier);
  if (value == nullptr)
    return findings.add(rule("HF701"), placeOf(file), "There is no CFBundleIdentifier.");
  const std::string* const text = value->as<std::string>();
  if (text == nullptr) return findings.add(rule("HF702"), place, "CFBundleIdentifier is no text.");
  if (text->empty() || withoutBlanks(*text) != *text)
    findings.add(rule("HF703"), place, fmt::format("CFBundleIdentifier is \"{}\".", *text));
}

}  // namespace

void lintIdentity(const PackageView& package, Findings& findings) {
  const std::string file = InstanceLayout::bundleInfo(package.path);
  FileError error;
  const auto bytes = Platform::current().files->read(file, &error);
  if (!bytes && error.code == FileError::kMissing)
    return findings.add(rule("HF701"), placeOf(file), "There is no such file.");
  const auto info = bytes ? PropertyList::parseDictionary(*bytes) : std::nullopt;
  if (!info)
    return findings.add(rule("HF702"), placeOf(file), "It is no property list that can be read.");
  lintIdentifier(*info, file, *bytes, findings);
  const auto version = PropertyList::textForKey(*info, kShortVersion);
  if (version && package.described.version && *version != *package.described.version)
    findings.add(
        rule("HF704"),
        {file, std::string(kShortVersion), lineOfKey(*bytes, rootKeysOf(*bytes), kShortVersion)},
        fmt::format("{} is \"{}\", the version \"{}\".", kShortVersion, *version,
                    *package.described.version));
}

}  // namespace installer::ctl::lint
