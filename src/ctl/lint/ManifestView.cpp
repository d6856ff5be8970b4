#include "ctl/lint/ManifestView.h"

#include <algorithm>
#include <utility>

#include "base/XmlRewriting.h"
#include "ctl/QuietPlatform.h"
#include "ctl/lint/Files.h"
#include "ctl/lint/Lines.h"
#include "formats/ManifestFeatures.h"
#include "hotfix/formats/InstallManifest.h"
#include "hotfix/util/StringUtil.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::lint {

namespace {

using Element = xml::RewritableDocument::Element;

constexpr std::string_view kRoot = InstallManifest::INSTALLER_ROOT;
// As long as the placeholder, and in no manifest.
constexpr std::string_view kReplacedRoot = "${installer.r00t}";

// The attribute of one element as the parser reads it; an empty one can be absent.
std::optional<std::string> attributeOf(xml::RewritableDocument& document, Element element,
                                       std::string_view name) {
  std::optional<std::string> value;
  document.changeAttributes({element}, name, [&](std::string_view text) {
    value = text;
    return std::string(text);
  });
  return value;
}

FeatureView featureView(xml::RewritableDocument& document, Element element, LineSearch& lines) {
  FeatureView feature{attributeOf(document, element, "id"),
                      attributeOf(document, element, "version"),
                      attributeOf(document, element, InstallManifest::URL_NODE),
                      attributeOf(document, element, "action"), std::nullopt};
  if (feature.id) feature.line = lines.next("\"" + *feature.id + "\"");
  return feature;
}

// Calls visit(place, whether in a comment) for each occurrence of one of two texts that are equally
// long.
template <class Visit>
void eachOccurrence(std::string_view document, std::string_view one, std::string_view other,
                    Visit visit) {
  std::size_t commentEnd = 0;
  for (std::size_t at = document.find_first_of("<$"); at != std::string_view::npos;
       at = document.find_first_of("<$", at + 1)) {
    const std::string_view rest = document.substr(at);
    if (at >= commentEnd && rest.starts_with("<!--"))
      commentEnd = std::min(document.find("-->", at), document.size());
    if (rest.starts_with(one) || rest.starts_with(other)) visit(at, at < commentEnd);
  }
}

}  // namespace

std::vector<FeatureView> ManifestView::installed() const {
  std::vector<FeatureView> found;
  std::copy_if(features.begin(), features.end(), std::back_inserter(found),
               [](const FeatureView& feature) { return feature.isInstalled(); });
  return found;
}

ManifestView readManifest(const std::string& file) {
  ManifestView view{.file = file};
  FileError error;
  auto bytes = Platform::current().files->read(file, &error);
  if (!bytes && error.code != FileError::kMissing && !isFolder(file))
    view.whyUnread = error.description;
  if (!bytes) return view;
  view.isThere = true;
  view.bytes = *std::move(bytes);
  const xml::Document document = xml::parse(view.bytes);
  if (!document) return view;
  view.isWellFormed = true;
  const QuietPlatform quiet;
  const auto features = manifestFeatures(*document);
  for (const std::string& line : quiet.errors()) view.lack = line;
  if (!features) return view;
  LineSearch lines(view.bytes);
  (void)lines.next("<feature ");  // what stands before it names no feature
  for (const Element element : *features)
    view.features.push_back(featureView(*document, element, lines));
  return view;
}

std::optional<std::vector<ElementAttributes>> childrenOfRoot(std::string bytes,
                                                             std::string_view name) {
  const xml::Document document = xml::parse(std::move(bytes));
  if (!document) return std::nullopt;
  std::vector<ElementAttributes> children;
  for (const Element child : document->childrenNamed(document->root(), name))
    children.push_back(
        {attributeOf(*document, child, "id"), attributeOf(*document, child, "version"),
         attributeOf(*document, child, "os") || attributeOf(*document, child, "ws") ||
             attributeOf(*document, child, "arch")});
  return children;
}

std::vector<std::size_t> linesOfRootsThatStay(const ManifestView& manifest) {
  const xml::Document document = xml::parse(manifest.bytes);
  if (!document) return {};
  {
    const QuietPlatform quiet;
    if (const auto features = manifestFeatures(*document))
      document->changeAttributes(*features, InstallManifest::URL_NODE, [](std::string_view url) {
        return StringUtil::stringByReplacingOccurrencesOfString(url, kRoot, kReplacedRoot);
      });
  }
  const std::string replaced = document->serialize().value_or("");
  std::vector<std::size_t> places;  // in the file
  eachOccurrence(manifest.bytes, kRoot, kRoot,
                 [&](std::size_t place, bool) { places.push_back(place); });
  const std::vector<std::size_t> lines = linesAt(manifest.bytes, places);
  std::vector<std::size_t> stayed;
  std::size_t number = 0;
  eachOccurrence(replaced, kRoot, kReplacedRoot, [&](std::size_t place, bool inComment) {
    const bool stays = std::string_view(replaced).substr(place).starts_with(kRoot);
    if (stays && !inComment) stayed.push_back(number < lines.size() ? lines[number] : 0);
    ++number;
  });
  return stayed;
}

bool standsIn(std::string_view document, std::string_view text) {
  bool found = false;
  eachOccurrence(document, text, text,
                 [&](std::size_t, bool inComment) { found = found || !inComment; });
  return found;
}

}  // namespace installer::ctl::lint
