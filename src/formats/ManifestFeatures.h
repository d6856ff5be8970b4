#pragma once

#include <optional>
#include <vector>

#include "base/XmlRewriting.h"

namespace installer {

// The features of an install manifest, in document order: of each installfeature the first
// requirements' own. nullopt, after an error line that names it, when a level above them is
// missing.
[[nodiscard]] std::optional<std::vector<xml::RewritableDocument::Element>> manifestFeatures(
    const xml::RewritableDocument& document);

}  // namespace installer
