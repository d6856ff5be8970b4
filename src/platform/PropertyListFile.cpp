#include "hotfix/platform/PropertyListFile.h"

#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::PropertyList {

std::optional<Dictionary> readDictionary(const std::string& path) {
  const std::optional<std::string> bytes = Platform::current().files->read(path);
  if (!bytes) return std::nullopt;
  return parseDictionary(*bytes);
}

bool writeDictionary(const Dictionary& dictionary, const std::string& path) {
  const std::optional<std::string> bytes = serialize(Value(dictionary));
  return bytes && Platform::current().files->write(path, *bytes);
}

}  // namespace installer::PropertyList
