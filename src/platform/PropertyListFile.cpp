#include "hotfix/platform/PropertyListFile.h"

#include <fmt/format.h>

#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/Reported.h"

namespace installer::PropertyList {

std::optional<Dictionary> readDictionary(const std::string& path) {
  FileError error;
  return readDictionary(path, error);
}

std::optional<Dictionary> readDictionary(const std::string& path, FileError& error) {
  const std::optional<std::string> bytes = Platform::current().files->read(path, &error);
  if (!bytes) return std::nullopt;
  std::optional<Dictionary> dictionary = parseDictionary(*bytes);
  if (!dictionary)
    error = {FileError::kOther,
             fmt::format("\"{}\" cannot be read: No property list with a dictionary", path)};
  return dictionary;
}

bool writeDictionary(const Dictionary& dictionary, const std::string& path) {
  const std::optional<std::string> bytes = serializeDictionary(dictionary);
  return bytes && reported::write(path, *bytes);
}

}  // namespace installer::PropertyList
