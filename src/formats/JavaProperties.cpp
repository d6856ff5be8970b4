#include "hotfix/formats/JavaProperties.h"

#include "formats/JavaPropertiesReader.h"
#include "formats/JavaPropertiesWriter.h"
#include "hotfix/platform/HomeFolders.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

std::optional<std::string> expanded(const std::optional<std::string>& path) {
  if (!path) return std::nullopt;
  return path::expandingTilde(*path);
}

}  // namespace

JavaProperties::JavaProperties() : _dict(std::make_unique<TextDictionary>()) {}

JavaProperties::JavaProperties(const JavaProperties& other)
    : _dict(std::make_unique<TextDictionary>(*other._dict)),
      _file(other._file),
      _readError(other._readError),
      _failedSave(other._failedSave) {}

JavaProperties& JavaProperties::operator=(const JavaProperties& other) {
  *_dict = *other._dict;
  _file = other._file;
  _readError = other._readError;
  _failedSave = other._failedSave;
  return *this;
}

JavaProperties::~JavaProperties() = default;

JavaProperties::JavaProperties(const std::optional<std::string>& file)
    : JavaProperties(file, FailedSave::isTold) {}

JavaProperties::JavaProperties(const std::optional<std::string>& file, FailedSave failedSave)
    : _dict(std::make_unique<TextDictionary>()), _file(expanded(file)), _failedSave(failedSave) {
  initDictionary();
}

void JavaProperties::initDictionary() {
  if (!_file) return;
  FileError error;
  std::optional<std::string> bytes = Platform::current().files->read(*_file, &error);
  _readError.reset();
  if (bytes)
    readJavaProperties(*std::move(bytes), *_dict);
  else if (error.code != FileError::kMissing)
    _readError = error;
}

std::optional<std::string> JavaProperties::getPropertyForKey(const std::string& key) const {
  const std::optional<std::string_view> value = _dict->find(key);
  if (!value) return std::nullopt;
  return std::string(*value);
}

bool JavaProperties::setProperty(const std::optional<std::string>& value,
                                 const std::optional<std::string>& forKey) {
  if (!forKey) {
    log(LogLevel::error, "attempt to insert nil key");
    return false;
  }
  if (!value) {
    log(LogLevel::error, "attempt to insert nil value (key: {})", *forKey);
    return false;
  }
  _dict->set(*forKey, *value);
  return true;
}

void JavaProperties::removePropertyForKey(const std::string& key) {
  _dict->remove(key);
}

std::vector<std::string> JavaProperties::propertyNames() const {
  std::vector<std::string> names;
  names.reserve(_dict->size());
  for (const auto& entry : *_dict) names.emplace_back(entry.key);
  return names;
}

std::vector<std::string> JavaProperties::allProperties() const {
  return propertyNames();
}

bool JavaProperties::savePropertiesToFile(const std::optional<std::string>& path) const {
  const std::optional<std::string> target = path ? expanded(path) : _file;
  if (!target) return false;
  const bool isTold = _failedSave == FailedSave::isTold;
  if (_readError && target == _file) {
    if (isTold) reported::tell(*_readError);
    return false;
  }
  const std::string text = writeJavaProperties(*_dict);
  return isTold ? reported::write(*target, text) : Platform::current().files->write(*target, text);
}

bool JavaProperties::mergeWithJavaProperties(const std::optional<std::string>& path) {
  if (!path) return true;
  if (!exists(path::expandingTilde(*path))) return false;
  const JavaProperties other(path);
  for (const auto& [key, value] : *other._dict) _dict->set(key, value);
  return savePropertiesToFile(std::nullopt);
}

}  // namespace installer
