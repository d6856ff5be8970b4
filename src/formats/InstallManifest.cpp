#include "hotfix/formats/InstallManifest.h"

#include <libxml/tree.h>

#include <string_view>
#include <utility>

#include "base/Characters.h"
#include "base/XmlRewriting.h"
#include "base/XmlWork.h"
#include "formats/ManifestFeatures.h"
#include "hotfix/util/StringUtil.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/Reported.h"

namespace installer {

namespace {

// No location is longer; beyond it entities are somebody's attempt to fill the memory.
constexpr std::size_t kMaximumValue = std::size_t{1} << 20;    // bytes
constexpr std::size_t kMaximumValues = std::size_t{32} << 20;  // bytes, each value counted twice

std::string_view textOf(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

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

xmlAttr* urlOf(const xmlNode* feature) {
  for (xmlAttr* attribute = feature->properties; attribute != nullptr; attribute = attribute->next)
    if (attribute->ns == nullptr && textOf(attribute->name) == InstallManifest::URL_NODE)
      return attribute;
  return nullptr;
}

std::string replaceRoot(std::string_view text, std::string_view replacement) {
  return StringUtil::stringByReplacingOccurrencesOfString(text, InstallManifest::INSTALLER_ROOT,
                                                          replacement);
}

bool isReference(const xmlNode* piece) {
  return piece->type == XML_ENTITY_REF_NODE;
}

bool holdsReference(const xmlAttr* attribute) {
  for (const xmlNode* piece = attribute->children; piece != nullptr; piece = piece->next)
    if (isReference(piece)) return true;
  return false;
}

// Puts the root into the locations of one document.
class RootReplacement {
 public:
  explicit RootReplacement(std::string_view root) : _root(root) {}

  // Entity references in the value stay as they are, unless the placeholder stands in one of them
  // or reaches across: then the value is written out.
  void replaceIn(xmlAttr* url) {
    if (!holdsReference(url)) return replaceInPieces(url);
    const std::optional<std::string> before = valueOf(url);
    replaceInPieces(url);
    if (!before) return;
    const std::string wanted = replaceRoot(*before, _root);
    if (valueOf(url) != wanted) xmlSetProp(url->parent, url->name, BAD_CAST wanted.c_str());
  }

 private:
  void replaceInPieces(const xmlAttr* url) {
    for (xmlNode* piece = url->children; piece != nullptr; piece = piece->next) {
      if (piece->type != XML_TEXT_NODE) continue;
      const std::string text = replaceRoot(textOf(piece->content), _root);
      xmlNodeSetContent(piece, BAD_CAST text.c_str());
    }
  }

  // The value with its entity references replaced; nullopt when it, or all of them together, grow
  // too long.
  std::optional<std::string> valueOf(const xmlAttr* attribute) {
    std::string value;
    if (!appendValue(attribute->children, value)) return std::nullopt;
    return value;
  }

  bool appendValue(const xmlNode* pieces, std::string& value) {
    for (const xmlNode* piece = pieces; piece != nullptr; piece = piece->next) {
      const bool reference = isReference(piece);
      if (!append(reference ? std::string_view() : textOf(piece->content), value)) return false;
      if (reference && piece->children != nullptr && !appendValue(piece->children->children, value))
        return false;
    }
    return true;
  }

  // A piece is work even when it adds nothing.
  bool append(std::string_view text, std::string& value) {
    if (text.size() >= _left || value.size() + text.size() > kMaximumValue) return false;
    _left -= text.size() + 1;
    value += text;
    return true;
  }

  std::string_view _root;
  std::size_t _left = kMaximumValues;  // bytes that values may still take
};

}  // namespace

InstallManifest::InstallManifest(std::string file) : _pathToManifest(std::move(file)) {
  FileError error;
  const std::optional<std::string> bytes = Platform::current().files->read(_pathToManifest, &error);
  if (!bytes) {
    _readError = error;
    return;
  }
  _xmlDoc = xml::parse(*bytes);
  if (_xmlDoc) xml::reindent(*_xmlDoc);
}

bool InstallManifest::replaceInstallerRootWith(const std::string& replacement) {
  if (!_xmlDoc) return false;
  const std::optional<std::vector<_xmlNode*>> features = manifestFeatures(*_xmlDoc);
  if (!features) return false;
  const std::string characters = asCharacters(replacement);
  const xml::XmlWork work;
  RootReplacement root(characters);
  for (const xmlNode* feature : *features)
    if (xmlAttr* url = urlOf(feature)) root.replaceIn(url);
  work.checkMemory();
  return true;
}

bool InstallManifest::saveInstallManifestAs(const std::optional<std::string>& path) const {
  if (!_xmlDoc) return false;
  const std::optional<std::string> bytes = xml::serialize(*_xmlDoc);
  return bytes && reported::write(path.value_or(_pathToManifest), *bytes);
}

}  // namespace installer
