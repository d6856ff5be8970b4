#include "hotfix/formats/Configuration.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer {

namespace {

constexpr mode_t kReadableByAll = 0644;

const std::string& filePath() {
  return Platform::current().paths.internalConfiguration;
}

// The file's bytes; nullopt when it is missing or somebody else could have planted it.
std::optional<std::string> trustedBytes() {
  FileManager& files = *Platform::current().files;
  uid_t owner = 0;
  std::optional<std::string> bytes = files.readUnlinked(filePath(), &owner);
  if (bytes && Platform::current().users->trusts(owner)) return bytes;
  if (bytes || files.entryExists(filePath()))
    logOnce(LogLevel::warning, "The file {} is not a plain file of a trusted user, ignore it.",
            filePath());
  return std::nullopt;
}

}  // namespace

Configuration::Configuration() {
  _internalProperties.load(trustedBytes());
}

std::optional<std::string> Configuration::getPropertyValueForKey(const std::string& key) const {
  return _internalProperties.getPropertyForKey(key);
}

bool Configuration::setProperty(const std::optional<std::string>& value,
                                const std::optional<std::string>& forKey) {
  return _internalProperties.setProperty(value, forKey);
}

bool Configuration::saveConfiguration() const {
  if (!_internalProperties._dict) return false;
  const std::optional<std::string> bytes = PropertyList::serialize(*_internalProperties._dict);
  // As with every property store, a refusing disk goes unreported.
  if (bytes)
    (void)Platform::current().files->write(filePath(), *bytes, ReplacedFile::forget,
                                           kReadableByAll);
  return true;
}

void Configuration::cleanupConfiguration() {
  FileManager& files = *Platform::current().files;
  if (files.entryExists(filePath())) (void)files.remove(filePath());
  _internalProperties.removeAllProperties();
}

}  // namespace installer
