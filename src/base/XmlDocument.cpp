#include "base/XmlDocument.h"

#include <libxml/SAX2.h>
#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <climits>

#include "base/QuietXml.h"

namespace installer::xml {

namespace {

constexpr int kBlanksALevel = 2;

bool isBlankText(const xmlNode* node) {
  return node->type == XML_TEXT_NODE && xmlIsBlankNode(node) != 0;
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
  xmlChar* space = xmlGetNsProp(element, BAD_CAST "space", XML_XML_NAMESPACE);
  const bool preserve = xmlStrEqual(space, BAD_CAST "preserve") != 0;
  const bool normal = xmlStrEqual(space, BAD_CAST "default") != 0;
  xmlFree(space);
  return preserve || (inherited && !normal);
}

void dropBlanks(xmlNode* element) {
  xmlNode* next = nullptr;
  for (xmlNode* child = element->children; child != nullptr; child = next) {
    next = child->next;
    if (!isBlankText(child)) continue;
    xmlUnlinkNode(child);
    xmlFreeNode(child);
  }
}

xmlNode* lineBreak(xmlDoc* document, int level) {
  const std::string text = "\n" + std::string(static_cast<std::size_t>(level) * kBlanksALevel, ' ');
  return xmlNewDocText(document, BAD_CAST text.c_str());
}

void addLineBreaks(xmlNode* element, int level) {
  for (xmlNode* child = element->children; child != nullptr; child = child->next)
    xmlAddPrevSibling(child, lineBreak(element->doc, level + 1));
  xmlAddChild(element, lineBreak(element->doc, level));
}

void reindentElement(xmlNode* element, int level, bool inherited) {
  if (!holdsOnlyElements(element)) return;
  const bool preserve = preservesSpace(element, inherited);
  if (!preserve) dropBlanks(element);
  for (xmlNode* child = element->children; child != nullptr; child = child->next)
    if (child->type == XML_ELEMENT_NODE) reindentElement(child, level + 1, preserve);
  if (!preserve) addLineBreaks(element, level);
}

bool startsLikeUtf16(std::string_view bytes) {
  using namespace std::string_view_literals;
  return bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv) ||
         bytes.starts_with("<\0"sv) || bytes.starts_with("\0<"sv);
}

// Notes the encoding that a document without a declared one is in, so that it is kept.
void noteEncoding(xmlDoc& document, std::string_view bytes) {
  if (document.encoding != nullptr) return;
  document.encoding = xmlCharStrdup(startsLikeUtf16(bytes) ? "UTF-16" : "UTF-8");
}

// A document that began without a declaration gets none.
int saveOptions(const xmlDoc& document) {
  constexpr int kNoDeclaration = -1;
  return document.standalone == kNoDeclaration ? XML_SAVE_NO_DECL : 0;
}

// Where a document's entities may be declared outside of it, a reference to one that is not known
// is no error. The library keeps such a reference in text and drops it from attributes, so that
// each is given an empty entity of its own while the document is read, which is never part of it.
class Parser {
 public:
  Parser() : _context(xmlNewParserCtxt()), _outside(xmlNewDoc(BAD_CAST "1.0")) {
    xmlCreateIntSubset(_outside.get(), BAD_CAST "outside", nullptr, nullptr);
    _context->_private = _outside.get();
    _context->sax->getEntity = entityNamed;
  }

  Document read(std::string_view bytes) {
    return Document(xmlCtxtReadMemory(_context.get(), bytes.data(), static_cast<int>(bytes.size()),
                                      nullptr, nullptr, XML_PARSE_NONET));
  }

 private:
  struct ContextDeleter {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
  };

  static xmlEntity* entityNamed(void* parser, const xmlChar* name) {
    auto* context = static_cast<xmlParserCtxt*>(parser);
    xmlEntity* known = xmlSAX2GetEntity(parser, name);
    const bool othersOutside = context->hasExternalSubset != 0 || context->hasPErefs != 0;
    if (known != nullptr || context->standalone == 1 || !othersOutside) return known;
    return outsideEntity(static_cast<xmlDoc*>(context->_private), name);
  }

  static xmlEntity* outsideEntity(xmlDoc* outside, const xmlChar* name) {
    if (xmlEntity* known = xmlGetDocEntity(outside, name)) return known;
    return xmlAddDocEntity(outside, name, XML_INTERNAL_GENERAL_ENTITY, nullptr, nullptr,
                           BAD_CAST "");
  }

  std::unique_ptr<xmlParserCtxt, ContextDeleter> _context;
  Document _outside;
};

struct BufferDeleter {
  void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};

}  // namespace

void DocumentDeleter::operator()(_xmlDoc* document) const {
  xmlFreeDoc(document);
}

Document parse(std::string_view bytes) {
  if (bytes.size() > INT_MAX) return nullptr;
  const QuietXml quiet;
  Document document = Parser().read(bytes);
  if (document) noteEncoding(*document, bytes);
  return document;
}

void reindent(_xmlDoc& document) {
  if (xmlNode* root = xmlDocGetRootElement(&document)) reindentElement(root, 0, false);
}

std::optional<std::string> serialize(_xmlDoc& document) {
  const QuietXml quiet;
  const std::unique_ptr<xmlBuffer, BufferDeleter> buffer(xmlBufferCreate());
  const auto* encoding = reinterpret_cast<const char*>(document.encoding);
  xmlSaveCtxt* saving = xmlSaveToBuffer(buffer.get(), encoding, saveOptions(document));
  // Null when nobody knows the encoding any more, which leaves no bytes.
  xmlSaveDoc(saving, &document);
  xmlSaveClose(saving);
  std::string bytes(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                    static_cast<std::size_t>(xmlBufferLength(buffer.get())));
  if (!parse(bytes)) return std::nullopt;
  return bytes;
}

}  // namespace installer::xml
