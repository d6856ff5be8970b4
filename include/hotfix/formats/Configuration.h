#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/formats/Properties.h"

namespace installer {

/// Values that the steps of installers hand to one another, and to the result panel, through one
/// file in /tmp. A file that neither root nor the effective nor the console user owns, or that is a
/// link, reads as absent: everybody can write to /tmp. That leaves a warning line (see ToldOnce).
class Configuration {
 public:
  /// Loads the file; an empty store when there is none. One that cannot be read gives a store that
  /// takes nothing and never writes.
  Configuration();

  /// The text stored under `key`; nullopt when it is missing or no text.
  [[nodiscard]] std::optional<std::string> getPropertyValueForKey(const std::string& key) const;
  /// As Properties::setProperty.
  [[nodiscard]] bool setProperty(const std::optional<std::string>& value,
                                 const std::optional<std::string>& forKey);
  /// Always to the fixed file, readable for everybody; the result of Properties' save
  /// [error].
  [[nodiscard]] bool saveConfiguration() const;
  /// Removes the file [error] and empties the store.
  void cleanupConfiguration();

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(void getPropertyValueForKey);
  HOTFIX_DELETED_FOR_NULL(void setProperty);
  /// @endcond

 private:
  Properties _internalProperties;
};

}  // namespace installer
