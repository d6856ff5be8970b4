#include "hotfix/workflow/HotfixPolicy.h"

#include "workflow/HotfixPackage.h"

namespace installer {

HotfixPolicy::HotfixPolicy(const std::optional<std::string>& path)
    : _properties(HotfixPackage::properties(path).value_or(PropertyList::Dictionary())) {}

bool HotfixPolicy::isSkipRunningCheck() const {
  return HotfixPackage::describedBy(_properties).skipRunningCheck;
}

}  // namespace installer
