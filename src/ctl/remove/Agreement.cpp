#include "ctl/remove/Agreement.h"

#include <fmt/format.h>

#include "ctl/status/Features.h"
#include "hotfix/platform/PropertyListFile.h"
#include "instance/InstanceLayout.h"
#include "platform/Exists.h"

namespace installer::ctl {

namespace {

struct Record {
  bool version = false;
  bool others = false;  // what goes last when a hotfix is removed, and only after a success
};

Record recordIn(const std::string& rcpHome) {
  const auto info = PropertyList::readDictionary(InstanceLayout::installInfo(rcpHome));
  const auto has = [&](const char* key) {
    return info && PropertyList::textForKey(*info, key).has_value();
  };
  return {has("hotfixVersion"), has("SKIPRUNNINGCHECK") || has("installedHotfixBundleID")};
}

std::string updateManifest(const std::string& rcpHome) {
  return InstanceLayout::deployed(rcpHome, InstanceLayout::kUpdateManifest);
}

}  // namespace

Agreement agreementIn(const std::string& rcpHome) {
  const Record record = recordIn(rcpHome);
  const std::string manifest = InstanceLayout::uninstallManifest(rcpHome);
  if (exists(manifest)) {
    if (!isManifest(manifest)) return Agreement::manifestDamaged;
    return record.version ? Agreement::agrees : Agreement::notRecorded;
  }
  if ((record.version || record.others) && isRemoval(updateManifest(rcpHome)))
    return Agreement::brokenOff;
  return record.version ? Agreement::manifestMissing : Agreement::nothing;
}

std::string_view nameOf(Agreement agreement) {
  switch (agreement) {
    case Agreement::agrees:
      return "agrees";
    case Agreement::notRecorded:
      return "not-recorded";
    case Agreement::brokenOff:
      return "broken-off";
    case Agreement::manifestMissing:
      return "manifest-missing";
    case Agreement::manifestDamaged:
      return "manifest-damaged";
    case Agreement::nothing:
      break;
  }
  return "nothing";
}

std::string disagreementText(Agreement agreement, const std::string& rcpHome) {
  const std::string manifest = InstanceLayout::uninstallManifest(rcpHome);
  switch (agreement) {
    case Agreement::notRecorded:
      return fmt::format("No hotfix is recorded, and there is an uninstall manifest, \"{}\".",
                         manifest);
    case Agreement::brokenOff:
      return fmt::format("A removal has begun and did not succeed; its manifest is \"{}\" by now.",
                         updateManifest(rcpHome));
    case Agreement::manifestMissing:
      return fmt::format("A hotfix is recorded, and its uninstall manifest, \"{}\", is missing.",
                         manifest);
    case Agreement::manifestDamaged:
      return fmt::format("The uninstall manifest, \"{}\", cannot be read as a manifest.", manifest);
    case Agreement::agrees:
    case Agreement::nothing:
      break;
  }
  return "";
}

std::string_view meaningOfForce(Agreement agreement) {
  switch (agreement) {
    case Agreement::notRecorded:
      return "With --force the launcher takes out the features that it names.";
    case Agreement::brokenOff:
      return "With --force that removal is made again.";
    case Agreement::manifestMissing:
      return "With --force the record of the hotfix is deleted, and its features stay installed. "
             "Installing the hotfix again brings the manifest back.";
    case Agreement::manifestDamaged:
      return "With --force the manifest and the record of a hotfix are deleted, and its features "
             "stay installed. Installing the hotfix again brings the manifest back.";
    case Agreement::agrees:
    case Agreement::nothing:
      break;
  }
  return "";
}

}  // namespace installer::ctl
