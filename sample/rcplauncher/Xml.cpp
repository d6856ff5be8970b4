#include "Xml.h"

#include <libxml/parser.h>

#include "Files.h"

namespace sample {

namespace {

const xmlChar* asXml(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

}  // namespace

XmlDocument parseXml(const std::filesystem::path& file) {
  const std::string content = readFile(file).value_or("");
  return {
      xmlReadMemory(content.data(), static_cast<int>(content.size()), nullptr, nullptr,
                    XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
      &xmlFreeDoc};
}

std::vector<xmlNode*> childrenOf(const xmlNode* parent, const std::string& name) {
  std::vector<xmlNode*> found;
  for (xmlNode* child = parent ? parent->children : nullptr; child; child = child->next) {
    if (child->type == XML_ELEMENT_NODE && xmlStrEqual(child->name, asXml(name))) {
      found.push_back(child);
    }
  }
  return found;
}

xmlNode* firstChildOf(const xmlNode* parent, const std::string& name) {
  const std::vector<xmlNode*> all = childrenOf(parent, name);
  return all.empty() ? nullptr : all.front();
}

std::string attributeOf(const xmlNode* element, const std::string& name) {
  xmlChar* value = xmlGetProp(element, asXml(name));
  if (!value) return "";
  std::string text = reinterpret_cast<const char*>(value);
  xmlFree(value);
  return text;
}

}  // namespace sample
