#include "Manifest.h"

#include "Files.h"
#include "Xml.h"

namespace sample {

namespace fs = std::filesystem;

namespace {

xmlNode* installElementOf(const XmlDocument& document) {
  if (!document) return nullptr;
  const xmlNode* object = firstChildOf(xmlDocGetRootElement(document.get()), "domain-object");
  return firstChildOf(firstChildOf(object, "object-data"), "install");
}

std::vector<xmlNode*> featuresOf(const xmlNode* installFeature) {
  return childrenOf(firstChildOf(installFeature, "requirements"), "feature");
}

bool canBeActedOn(const FeatureRequest& request, const std::string& action) {
  if (action != "install" && action != "uninstall") return false;
  if (!isPlainName(request.id)) return false;
  const bool anyVersion = !request.install && request.version.empty();
  return anyVersion || isPlainName(request.version);
}

std::optional<FeatureRequest> requestFrom(const xmlNode* feature, const xmlNode* installFeature) {
  std::string action = attributeOf(feature, "action");
  if (action.empty()) action = "install";
  const FeatureRequest request{attributeOf(feature, "id"), attributeOf(feature, "version"),
                               attributeOf(feature, "url"),
                               attributeOf(installFeature, "description"), action == "install"};
  if (!canBeActedOn(request, action)) return std::nullopt;
  return request;
}

void removeNode(xmlNode* node) {
  xmlUnlinkNode(node);
  xmlFreeNode(node);
}

// An installfeature that loses its last feature goes with it.
void takeOut(const xmlNode* install, const std::string& id) {
  for (xmlNode* installFeature : childrenOf(install, "installfeature")) {
    const std::vector<xmlNode*> features = featuresOf(installFeature);
    std::size_t removed = 0;
    for (xmlNode* feature : features) {
      if (attributeOf(feature, "id") != id) continue;
      removeNode(feature);
      ++removed;
    }
    if (removed > 0 && removed == features.size()) removeNode(installFeature);
  }
}

xmlNode* addChild(xmlNode* parent, const char* name) {
  return xmlNewChild(parent, nullptr, reinterpret_cast<const xmlChar*>(name), nullptr);
}

void setAttribute(xmlNode* element, const char* name, const std::string& value) {
  xmlNewProp(element, reinterpret_cast<const xmlChar*>(name),
             reinterpret_cast<const xmlChar*>(value.c_str()));
}

void putIn(xmlNode* install, const FeatureRequest& request) {
  xmlNode* installFeature = addChild(install, "installfeature");
  setAttribute(installFeature, "id", request.id);
  setAttribute(installFeature, "description", request.description);
  xmlNode* feature = addChild(addChild(installFeature, "requirements"), "feature");
  setAttribute(feature, "id", request.id);
  setAttribute(feature, "version", request.version);
  setAttribute(feature, "url", request.url);
  setAttribute(feature, "action", "install");
}

bool save(const XmlDocument& document, const fs::path& file) {
  xmlChar* bytes = nullptr;
  int size = 0;
  xmlDocDumpFormatMemory(document.get(), &bytes, &size, 1);
  if (!bytes) return false;
  const bool written = writeFile(
      file, std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)));
  xmlFree(bytes);
  return written;
}

}  // namespace

std::optional<std::vector<FeatureRequest>> readManifest(const fs::path& file) {
  const XmlDocument document = parseXml(file);
  const xmlNode* install = installElementOf(document);
  if (!install) return std::nullopt;
  std::vector<FeatureRequest> requests;
  for (const xmlNode* installFeature : childrenOf(install, "installfeature")) {
    for (const xmlNode* feature : featuresOf(installFeature)) {
      const std::optional<FeatureRequest> request = requestFrom(feature, installFeature);
      if (!request) return std::nullopt;
      requests.push_back(*request);
    }
  }
  return requests;
}

bool carryOver(const fs::path& file, const std::vector<FeatureRequest>& done) {
  const XmlDocument document = parseXml(file);
  xmlNode* install = installElementOf(document);
  if (!install) return false;
  for (const FeatureRequest& request : done) {
    takeOut(install, request.id);
    if (request.install) putIn(install, request);
  }
  return save(document, file);
}

}  // namespace sample
