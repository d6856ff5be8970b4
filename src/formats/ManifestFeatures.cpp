#include "formats/ManifestFeatures.h"

#include "hotfix/formats/InstallManifest.h"
#include "platform/Log.h"

namespace installer {

namespace {

using xml::RewritableDocument;
using Element = RewritableDocument::Element;
using Elements = std::vector<Element>;

Element firstChildNamed(const RewritableDocument& document, Element parent, const char* name) {
  const Elements children = document.childrenNamed(parent, name);
  return children.empty() ? nullptr : children.front();
}

void logMissing(const char* element) {
  log(LogLevel::error, "Not able to get {} element", element);
}

// The element "install" on its fixed path below the root; null after an error line.
Element installElement(const RewritableDocument& document) {
  Element element = document.root();
  if (element == nullptr) logMissing("root");
  for (const char* name :
       {InstallManifest::DOMAIN_OBJECT, InstallManifest::OBJECT_DATA, InstallManifest::INSTALL}) {
    if (element == nullptr) return nullptr;
    element = firstChildNamed(document, element, name);
    if (element == nullptr) logMissing(name);
  }
  return element;
}

void appendFeatures(const RewritableDocument& document, Element installFeature,
                    Elements& features) {
  const Element requirements =
      firstChildNamed(document, installFeature, InstallManifest::REQUIREMENTS);
  if (requirements == nullptr) return;
  const Elements found = document.childrenNamed(requirements, InstallManifest::FEATURE);
  features.insert(features.end(), found.begin(), found.end());
}

}  // namespace

std::optional<std::vector<Element>> manifestFeatures(const RewritableDocument& document) {
  const Element install = installElement(document);
  if (install == nullptr) return std::nullopt;
  const Elements installFeatures =
      document.childrenNamed(install, InstallManifest::INSTALL_FEATURE);
  if (installFeatures.empty()) {
    logMissing("install-feature");  // the line's own spelling; the element has no hyphen
    return std::nullopt;
  }
  Elements features;
  for (const Element installFeature : installFeatures)
    appendFeatures(document, installFeature, features);
  return features;
}

}  // namespace installer
