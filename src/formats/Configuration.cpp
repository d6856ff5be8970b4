#include "hotfix/formats/Configuration.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Reported.h"
#include "platform/UserContext.h"

namespace installer {

namespace {

constexpr mode_t kReadableByAll = 0644;

const std::string& filePath() {
  return Platform::current().paths.internalConfiguration;
}

// Whether a file that could not be read may be one of ours all the same.
bool mayBeOurs(const FileError& error) {
  const Platform& platform = Platform::current();
  const std::optional<uid_t> owner = platform.files->owner(filePath());
  return error.code != FileError::kNoFile && (!owner || platform.users->trusts(*owner));
}

// A file with another name was made for another place, and anybody can have put it here.
bool isTrusted(const FileOrigin& origin) {
  return !origin.hasOtherNames && Platform::current().users->trusts(origin.owner);
}

// The entries of the file: none when it is missing or somebody else could have planted it, nullopt
// when it cannot be read and is to be left alone.
std::optional<PropertyList::Dictionary> trustedEntries() {
  const Platform& platform = Platform::current();
  FileOrigin origin;
  FileError error;
  const auto bytes = platform.files->readUnlinked(filePath(), &origin, &error);
  if (bytes && isTrusted(origin)) return PropertyList::parseDictionary(*bytes);
  if (!bytes && error.code == FileError::kMissing) return PropertyList::Dictionary();
  if (!bytes && mayBeOurs(error)) {
    reported::tell(error);
    return std::nullopt;
  }
  logOnce(LogLevel::warning, "The file {} is not a plain file of a trusted user, ignore it.",
          filePath());
  return PropertyList::Dictionary();
}

}  // namespace

Configuration::Configuration() {
  _internalProperties._dict = trustedEntries();
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
  if (!bytes) return true;
  const std::string& file = filePath();
  // As with every property store, a refusing disk does not change the answer.
  (void)reported::write(file, *bytes, ReplacedFile::forget, kReadableByAll);  // leaves its line
  return true;
}

void Configuration::cleanupConfiguration() {
  (void)reported::remove(filePath());  // a missing file is as good as a removed one
  _internalProperties.removeAllProperties();
}

}  // namespace installer
