#include "hotfix/formats/InstallManifest.h"

#include <string_view>
#include <utility>

#include "base/Characters.h"
#include "base/XmlRewriting.h"
#include "formats/ManifestFeatures.h"
#include "hotfix/util/StringUtil.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/Reported.h"

namespace installer {

namespace {

// Locations hold the bytes of paths, XML holds characters: what is no UTF-8 counts as Latin-1.
std::string asCharacters(std::string_view bytes) {
  std::string text;
  for (std::size_t at = 0; at < bytes.size();) {
    const DecodedCharacter decoded = decodeCharacter(bytes, at);
    appendCharacter(decoded.character, text);
    at += decoded.length;
  }
  return text;
}

std::string replaceRoot(std::string_view text, std::string_view replacement) {
  return StringUtil::stringByReplacingOccurrencesOfString(text, InstallManifest::INSTALLER_ROOT,
                                                          replacement);
}

}  // namespace

InstallManifest::InstallManifest(std::string file) : _pathToManifest(std::move(file)) {
  FileError error;
  std::optional<std::string> bytes = Platform::current().files->read(_pathToManifest, &error);
  if (!bytes) {
    _readError = error;
    return;
  }
  _xmlDoc = xml::parse(*std::move(bytes));
}

bool InstallManifest::replaceInstallerRootWith(const std::string& replacement) {
  if (!_xmlDoc) return false;
  const auto features = manifestFeatures(*_xmlDoc);
  if (!features) return false;
  const std::string root = asCharacters(replacement);
  _xmlDoc->changeAttributes(*features, URL_NODE,
                            [&](std::string_view location) { return replaceRoot(location, root); });
  return true;
}

bool InstallManifest::saveInstallManifestAs(const std::optional<std::string>& path) const {
  if (!_xmlDoc) return false;
  const std::optional<std::string> bytes = _xmlDoc->serialize();
  return bytes && reported::write(path.value_or(_pathToManifest), *bytes);
}

}  // namespace installer
