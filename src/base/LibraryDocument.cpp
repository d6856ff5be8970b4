#include "base/LibraryDocument.h"

#include <utility>

#include "base/XmlWork.h"

namespace installer::xml {

namespace {

// No location is longer; beyond it entities are somebody's attempt to fill the memory.
constexpr std::size_t kMaximumValue = std::size_t{1} << 20;    // bytes
constexpr std::size_t kMaximumValues = std::size_t{32} << 20;  // bytes, each value counted twice

bool isBlankText(const xmlNode* node) {
  return node->type == XML_TEXT_NODE && library().xmlIsBlankNode(node) != 0;
}

bool isLayoutOnly(const xmlNode* node) {
  return node->type == XML_ELEMENT_NODE || node->type == XML_COMMENT_NODE ||
         node->type == XML_PI_NODE || isBlankText(node);
}

// Whether white space in the element is only there to please the eye.
bool holdsOnlyElements(const xmlNode* element) {
  bool anyElement = false;
  for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
    if (!isLayoutOnly(child)) return false;
    anyElement = anyElement || child->type == XML_ELEMENT_NODE;
  }
  return anyElement;
}

// What the element says about its white space, `inherited` when it says nothing.
bool preservesSpace(const xmlNode* element, bool inherited) {
  xmlChar* space = library().xmlGetNsProp(element, BAD_CAST "space", XML_XML_NAMESPACE);
  const bool preserve = textOf(space) == "preserve";
  const bool normal = textOf(space) == "default";
  (*library().xmlFreePlace)(space);
  return preserve || (inherited && !normal);
}

void dropBlanks(xmlNode* element) {
  xmlNode* next = nullptr;
  for (xmlNode* child = element->children; child != nullptr; child = next) {
    next = child->next;
    if (!isBlankText(child)) continue;
    library().xmlUnlinkNode(child);
    library().xmlFreeNode(child);
  }
}

xmlNode* lineBreak(xmlDoc* document, int level) {
  const std::string text = "\n" + std::string(static_cast<std::size_t>(level) * kBlanksALevel, ' ');
  return library().xmlNewDocText(document, BAD_CAST text.c_str());
}

void addLineBreaks(xmlNode* element, int level) {
  for (xmlNode* child = element->children; child != nullptr; child = child->next)
    library().xmlAddPrevSibling(child, lineBreak(element->doc, level + 1));
  library().xmlAddChild(element, lineBreak(element->doc, level));
}

void reindentElement(xmlNode* element, int level, bool inherited) {
  if (!holdsOnlyElements(element)) return;
  const bool preserve = preservesSpace(element, inherited);
  if (!preserve) dropBlanks(element);
  for (xmlNode* child = element->children; child != nullptr; child = child->next)
    if (child->type == XML_ELEMENT_NODE) reindentElement(child, level + 1, preserve);
  if (!preserve) addLineBreaks(element, level);
}

// A document that began without a declaration gets none.
int saveOptions(const xmlDoc& document) {
  constexpr int kNoDeclaration = -1;
  return document.standalone == kNoDeclaration ? XML_SAVE_NO_DECL : 0;
}

struct BufferDeleter {
  void operator()(xmlBuffer* buffer) const { library().xmlBufferFree(buffer); }
};

void putEvenly(xmlDoc& document) {
  const XmlWork work;
  if (xmlNode* root = library().xmlDocGetRootElement(&document)) reindentElement(root, 0, false);
  work.checkMemory();
}

bool isElement(const xmlNode* node, std::string_view name) {
  return node->type == XML_ELEMENT_NODE && (node->ns == nullptr || node->ns->prefix == nullptr) &&
         textOf(node->name) == name;
}

// Null when the element has none.
xmlAttr* attributeNamed(const xmlNode* element, std::string_view name) {
  for (xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next)
    if (attribute->ns == nullptr && textOf(attribute->name) == name) return attribute;
  return nullptr;
}

bool isReference(const xmlNode* piece) {
  return piece->type == XML_ENTITY_REF_NODE;
}

bool holdsReference(const xmlAttr* attribute) {
  for (const xmlNode* piece = attribute->children; piece != nullptr; piece = piece->next)
    if (isReference(piece)) return true;
  return false;
}

// One change of attributes, whose values together may only grow so far.
class AttributeChange {
 public:
  explicit AttributeChange(const RewritableDocument::Change& change) : _change(change) {}

  void changeValueOf(xmlAttr* attribute) {
    if (!holdsReference(attribute)) return changePieces(attribute);
    const std::optional<std::string> before = valueOf(attribute);
    changePieces(attribute);
    if (!before) return;
    const std::string wanted = _change(*before);
    if (valueOf(attribute) != wanted)
      library().xmlSetProp(attribute->parent, attribute->name, BAD_CAST wanted.c_str());
  }

 private:
  void changePieces(const xmlAttr* attribute) {
    for (xmlNode* piece = attribute->children; piece != nullptr; piece = piece->next) {
      if (piece->type != XML_TEXT_NODE) continue;
      const std::string text = _change(textOf(piece->content));
      library().xmlNodeSetContent(piece, BAD_CAST text.c_str());
    }
  }

  // The value with its entity references replaced; nullopt when it, or all of them together, grow
  // too long.
  std::optional<std::string> valueOf(const xmlAttr* attribute) {
    std::string value;
    if (!appendValue(attribute->children, value)) return std::nullopt;
    return value;
  }

  bool appendValue(const xmlNode* pieces, std::string& value) {
    for (const xmlNode* piece = pieces; piece != nullptr; piece = piece->next) {
      const bool reference = isReference(piece);
      if (!append(reference ? std::string_view() : textOf(piece->content), value)) return false;
      if (reference && piece->children != nullptr && !appendValue(piece->children->children, value))
        return false;
    }
    return true;
  }

  // A piece is work even when it adds nothing.
  bool append(std::string_view text, std::string& value) {
    if (text.size() >= _left || value.size() + text.size() > kMaximumValue) return false;
    _left -= text.size() + 1;
    value += text;
    return true;
  }

  const RewritableDocument::Change& _change;
  std::size_t _left = kMaximumValues;  // bytes that values may still take
};

}  // namespace

Document LibraryDocument::parse(std::string_view bytes) {
  Tree tree = treeOf(bytes);
  if (!tree) return nullptr;
  putEvenly(*tree);
  return Document(new LibraryDocument(std::move(tree)));
}

RewritableDocument::Element LibraryDocument::root() const {
  return library().xmlDocGetRootElement(_tree.get());
}

std::vector<RewritableDocument::Element> LibraryDocument::childrenNamed(
    Element parent, std::string_view name) const {
  std::vector<Element> children;
  const xmlNode* child = static_cast<const xmlNode*>(parent)->children;
  for (; child != nullptr; child = child->next)
    if (isElement(child, name)) children.push_back(child);
  return children;
}

void LibraryDocument::changeAttributes(const std::vector<Element>& elements, std::string_view name,
                                       const Change& change) {
  const XmlWork work;
  AttributeChange changing(change);
  for (const Element element : elements)
    if (xmlAttr* attribute = attributeNamed(static_cast<const xmlNode*>(element), name))
      changing.changeValueOf(attribute);
  work.checkMemory();
}

std::optional<std::string> LibraryDocument::serialize() const {
  const XmlWork work;
  const std::unique_ptr<xmlBuffer, BufferDeleter> buffer(library().xmlBufferCreate());
  const auto* encoding = reinterpret_cast<const char*>(_tree->encoding);
  xmlSaveCtxt* saving = library().xmlSaveToBuffer(buffer.get(), encoding, saveOptions(*_tree));
  // Null when nobody knows the encoding any more, which leaves no bytes.
  library().xmlSaveDoc(saving, _tree.get());
  library().xmlSaveClose(saving);
  work.checkMemory();
  std::string bytes(reinterpret_cast<const char*>(library().xmlBufferContent(buffer.get())),
                    static_cast<std::size_t>(library().xmlBufferLength(buffer.get())));
  if (!treeOf(bytes)) return std::nullopt;
  return bytes;
}

}  // namespace installer::xml
