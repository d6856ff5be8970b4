#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/PropertyList.h"

namespace installer {

/// What a hotfix package allows, read from its hotfix.plist.
class HotfixPolicy {
 public:
  /// A missing package or plist gives the policy that allows nothing.
  explicit HotfixPolicy(const std::optional<std::string>& path);

  /// Whether the package may be installed into a running instance: SKIPRUNNINGCHECK is the text
  /// "true", to the letter.
  bool isSkipRunningCheck() const;

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit HotfixPolicy);
  /// @endcond

 private:
  PropertyList::Dictionary _properties;  // all entries of the plist
};

}  // namespace installer
