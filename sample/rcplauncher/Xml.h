#pragma once

#include <libxml/tree.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace sample {

using XmlDocument = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

// Empty when the file is missing or malformed. Never fetches or substitutes anything.
XmlDocument parseXml(const std::filesystem::path& file);

// The direct children of `parent` with that name, in document order; none for a null parent.
std::vector<xmlNode*> childrenOf(const xmlNode* parent, const std::string& name);
xmlNode* firstChildOf(const xmlNode* parent, const std::string& name);

// Empty when the attribute is absent.
std::string attributeOf(const xmlNode* element, const std::string& name);

}  // namespace sample
