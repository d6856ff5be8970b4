#include "formats/ManifestFeatures.h"

#include <libxml/tree.h>

#include "hotfix/formats/InstallManifest.h"
#include "platform/Log.h"

namespace installer {

namespace {

using Nodes = std::vector<xmlNode*>;

// The name as it is written: one with a prefix is another name, a default namespace none.
bool isElement(const xmlNode* node, const char* name) {
  return node->type == XML_ELEMENT_NODE && (node->ns == nullptr || node->ns->prefix == nullptr) &&
         xmlStrEqual(node->name, BAD_CAST name) != 0;
}

Nodes childrenNamed(const xmlNode* element, const char* name) {
  Nodes children;
  for (xmlNode* child = element->children; child != nullptr; child = child->next)
    if (isElement(child, name)) children.push_back(child);
  return children;
}

xmlNode* firstChildNamed(const xmlNode* element, const char* name) {
  const Nodes children = childrenNamed(element, name);
  return children.empty() ? nullptr : children.front();
}

void logMissing(const char* element) {
  log(LogLevel::error, "Not able to get {} element", element);
}

// The element "install" on its fixed path below the root; null after an error line.
const xmlNode* installElement(const xmlDoc& document) {
  const xmlNode* element = xmlDocGetRootElement(&document);
  if (element == nullptr) logMissing("root");
  for (const char* name :
       {InstallManifest::DOMAIN_OBJECT, InstallManifest::OBJECT_DATA, InstallManifest::INSTALL}) {
    if (element == nullptr) return nullptr;
    element = firstChildNamed(element, name);
    if (element == nullptr) logMissing(name);
  }
  return element;
}

void appendFeatures(const xmlNode* installFeature, Nodes& features) {
  const xmlNode* requirements = firstChildNamed(installFeature, InstallManifest::REQUIREMENTS);
  if (requirements == nullptr) return;
  const Nodes found = childrenNamed(requirements, InstallManifest::FEATURE);
  features.insert(features.end(), found.begin(), found.end());
}

}  // namespace

std::optional<std::vector<_xmlNode*>> manifestFeatures(const _xmlDoc& document) {
  const xmlNode* install = installElement(document);
  if (install == nullptr) return std::nullopt;
  const Nodes installFeatures = childrenNamed(install, InstallManifest::INSTALL_FEATURE);
  if (installFeatures.empty()) {
    logMissing("install-feature");  // the line's own spelling; the element has no hyphen
    return std::nullopt;
  }
  Nodes features;
  for (const xmlNode* installFeature : installFeatures) appendFeatures(installFeature, features);
  return features;
}

}  // namespace installer
