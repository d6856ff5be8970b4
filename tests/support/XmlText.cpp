#include "support/XmlText.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <memory>

namespace installer::test {
namespace {

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

std::string textOf(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

std::string qualified(const xmlNs* space, const xmlChar* name) {
  if (space == nullptr || space->prefix == nullptr) return textOf(name);
  return textOf(space->prefix) + ":" + textOf(name);
}

// The value as it stands, an entity that a DTD explains as "&name;".
std::string valueOf(const xmlAttr& attribute) {
  std::string value;
  for (const xmlNode* part = attribute.children; part != nullptr; part = part->next)
    value +=
        part->type == XML_ENTITY_REF_NODE ? "&" + textOf(part->name) + ";" : textOf(part->content);
  return value;
}

void addAttributes(const xmlNode& element, XmlNode& node) {
  for (const xmlNs* space = element.nsDef; space != nullptr; space = space->next)
    node.attributes.emplace_back(
        space->prefix == nullptr ? "xmlns" : "xmlns:" + textOf(space->prefix), textOf(space->href));
  for (const xmlAttr* attribute = element.properties; attribute != nullptr;
       attribute = attribute->next)
    node.attributes.emplace_back(qualified(attribute->ns, attribute->name), valueOf(*attribute));
}

void addNode(const xmlNode& found, std::vector<XmlNode>& into);

XmlNode elementOf(const xmlNode& found) {
  XmlNode node{XmlNode::Kind::element, qualified(found.ns, found.name), "", {}, {}};
  addAttributes(found, node);
  for (const xmlNode* child = found.children; child != nullptr; child = child->next)
    addNode(*child, node.children);
  return node;
}

void addNode(const xmlNode& found, std::vector<XmlNode>& into) {
  using Kind = XmlNode::Kind;
  const std::string name = textOf(found.name);
  const std::string content = found.type == XML_ELEMENT_NODE || found.type == XML_ENTITY_REF_NODE ||
                                      found.type == XML_DTD_NODE
                                  ? std::string()
                                  : textOf(found.content);
  if (found.type == XML_ELEMENT_NODE) into.push_back(elementOf(found));
  if (found.type == XML_TEXT_NODE) into.push_back({Kind::text, "", content, {}, {}});
  if (found.type == XML_CDATA_SECTION_NODE) into.push_back({Kind::cdata, "", content, {}, {}});
  if (found.type == XML_COMMENT_NODE) into.push_back({Kind::comment, "", content, {}, {}});
  if (found.type == XML_PI_NODE) into.push_back({Kind::instruction, name, content, {}, {}});
  if (found.type == XML_ENTITY_REF_NODE) into.push_back({Kind::reference, name, "", {}, {}});
}

std::string documentTypeOf(xmlDoc& document) {
  if (document.intSubset == nullptr) return "";
  const std::unique_ptr<xmlBuffer, void (*)(xmlBuffer*)> buffer(xmlBufferCreate(), xmlBufferFree);
  xmlNodeDump(buffer.get(), &document, reinterpret_cast<xmlNode*>(document.intSubset), 0, 0);
  return textOf(xmlBufferContent(buffer.get()));
}

}  // namespace

std::vector<const XmlNode*> XmlNode::elements() const {
  std::vector<const XmlNode*> found;
  for (const XmlNode& child : children)
    if (child.kind == Kind::element) found.push_back(&child);
  return found;
}

std::vector<XmlNode*> XmlNode::elements(const std::string& named) {
  std::vector<XmlNode*> found;
  for (XmlNode& child : children)
    if (child.kind == Kind::element && child.name == named) found.push_back(&child);
  return found;
}

std::string* XmlNode::attribute(const std::string& named) {
  for (auto& [key, value] : attributes)
    if (key == named) return &value;
  return nullptr;
}

std::string XmlNode::wholeText() const {
  std::string result;
  for (const XmlNode& child : children)
    if (child.kind == Kind::text || child.kind == Kind::cdata) result += child.text;
  return result;
}

std::optional<XmlDocument> XmlDocument::parse(const std::string& text) {
  constexpr int kQuietAndLocal = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, kQuietAndLocal),
      xmlFreeDoc);
  if (document == nullptr) return std::nullopt;
  XmlDocument result{documentTypeOf(*document), {}};
  for (const xmlNode* node = document->children; node != nullptr; node = node->next)
    addNode(*node, result.top);
  return result;
}

const XmlNode& XmlDocument::root() const {
  return *std::find_if(top.begin(), top.end(),
                       [](const XmlNode& node) { return node.kind == XmlNode::Kind::element; });
}
XmlNode& XmlDocument::root() {
  return const_cast<XmlNode&>(static_cast<const XmlDocument&>(*this).root());
}

void dropIndentation(XmlNode& element) {
  const bool hasText =
      std::any_of(element.children.begin(), element.children.end(), [](const XmlNode& child) {
        return child.kind == XmlNode::Kind::cdata || child.kind == XmlNode::Kind::reference ||
               (child.kind == XmlNode::Kind::text && !isBlank(child.text));
      });
  const bool hasElements = !element.elements().empty();
  if (!hasText && (hasElements || element.children.size() > 1))
    std::erase_if(element.children, [](const XmlNode& child) {
      return child.kind == XmlNode::Kind::text && isBlank(child.text);
    });
  for (XmlNode& child : element.children) dropIndentation(child);
}

std::string described(const XmlNode& node, int depth) {
  static const char* kinds[] = {"element", "text", "cdata", "comment", "instruction", "reference"};
  std::string line(static_cast<std::size_t>(2 * depth), ' ');
  line += kinds[static_cast<int>(node.kind)];
  line += " " + node.name + " [" + node.text + "]";
  for (const auto& [key, value] : node.attributes) line += " " + key + "=[" + value + "]";
  line += "\n";
  for (const XmlNode& child : node.children) line += described(child, depth + 1);
  return line;
}

}  // namespace installer::test
