#include "hotfix/workflow/HotfixPolicy.h"

#include "workflow/HotfixPackage.h"

namespace installer {

HotfixPolicy::HotfixPolicy(const std::optional<std::string>& path)
    : _properties(HotfixPackage::properties(path).value_or(PropertyList::Dictionary())) {}

bool HotfixPolicy::isSkipRunningCheck() const {
  return PropertyList::textForKey(_properties, "SKIPRUNNINGCHECK") == "true";
}

}  // namespace installer
