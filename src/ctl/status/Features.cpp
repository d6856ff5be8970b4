#include "ctl/status/Features.h"

#include <algorithm>
#include <optional>

#include "base/XmlRewriting.h"
#include "formats/ManifestFeatures.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

// Null when there is none.
xml::Document documentAt(const std::string& manifest) {
  std::optional<std::string> bytes = Platform::current().files->read(manifest);
  return bytes ? xml::parse(std::move(*bytes)) : nullptr;
}

// The document is only asked; the change leaves each value as it is.
std::string attributeOf(xml::RewritableDocument& document, xml::RewritableDocument::Element element,
                        std::string_view name) {
  std::string found;
  document.changeAttributes({element}, name, [&](std::string_view value) {
    found = value;
    return found;
  });
  return found;
}

}  // namespace

std::vector<Feature> featuresIn(const std::string& manifest) {
  const xml::Document document = documentAt(manifest);
  if (!document) return {};
  std::vector<Feature> features;
  const auto elements = manifestFeatures(*document);
  if (!elements) return {};
  for (const auto element : *elements)
    features.push_back(
        {attributeOf(*document, element, "id"), attributeOf(*document, element, "version")});
  return features;
}

bool isRemoval(const std::string& manifest) {
  const xml::Document document = documentAt(manifest);
  const auto elements = document ? manifestFeatures(*document) : std::nullopt;
  return elements && !elements->empty() &&
         std::all_of(elements->begin(), elements->end(), [&](const auto element) {
           return attributeOf(*document, element, "action") == "uninstall";
         });
}

bool isManifest(const std::string& manifest) {
  return documentAt(manifest) != nullptr;
}

}  // namespace installer::ctl
