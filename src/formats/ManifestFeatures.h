#pragma once

#include <optional>
#include <vector>

struct _xmlDoc;
struct _xmlNode;

namespace installer {

// The features of an install manifest, in document order, owned by the document: of each
// installfeature the first requirements' own. nullopt, after an error line that names it, when a
// level above them is missing.
[[nodiscard]] std::optional<std::vector<_xmlNode*>> manifestFeatures(const _xmlDoc& document);

}  // namespace installer
