#include "base/XmlRewriting.h"

#include <libxml/SAX2.h>
#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include "base/MarkupScan.h"
#include "base/XmlParser.h"
#include "base/XmlWork.h"

namespace installer::xml {

namespace {

constexpr int kBlanksALevel = 2;
constexpr std::size_t kMaximumDeclaredAttributes = 4096;

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

// A character as an attribute's value tells it. The library itself sees to quotation marks, and
// leaves references and ampersands as they are to be written.
std::string escaped(char character) {
  switch (character) {
    case '<':
      return "&lt;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return {character};
  }
}

// Empty for none.
std::string escaped(const xmlChar* value) {
  std::string text;
  for (const xmlChar* at = value; at != nullptr && *at != 0; ++at)
    text += escaped(static_cast<char>(*at));
  return text;
}

// The library writes the names of namespaces as they are. Nothing else asks for them: names of
// elements and attributes count as they are written.
void escapeName(xmlNs& space) {
  const std::string name = escaped(space.href);
  if (xmlStrEqual(space.href, BAD_CAST name.c_str()) != 0) return;
  xmlFree(const_cast<xmlChar*>(space.href));
  space.href = xmlCharStrdup(name.c_str());
}

// Takes the parser's events for the library's own handlers, which build the document.
//
// Where a document's entities may be declared outside of it, a reference to one that is not known
// is no error. The library keeps such a reference in text and drops it from attributes, so that
// each is given an empty entity of its own while the document is read, which is never part of it.
class Building {
 public:
  Building() : _outside(xmlNewDoc(BAD_CAST "1.0")) {
    xmlCreateIntSubset(_outside.get(), BAD_CAST "outside", nullptr, nullptr);
  }

  static xmlSAXHandler handler();

 private:
  // The library's own handler, with one node counted.
  template <auto Build>
  struct Counted;
  template <class... Arguments, void (*Build)(void*, Arguments...)>
  struct Counted<Build> {
    static void take(void* context, Arguments... arguments) {
      Build(context, arguments...);
      count(context, 1);
    }
  };

  static Building& of(void* context) { return Parser::receiverOf<Building>(context); }

  static void count(void* context, std::size_t nodes) {
    Building& building = of(context);
    building._nodes += nodes;
    if (building._nodes > kMaximumNodes) Parser::refuse(context);
  }

  static void element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaceCount, const xmlChar** namespaces, int attributeCount,
                      int defaultCount, const xmlChar** attributes) {
    xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                          defaultCount, attributes);
    escapeNames(context);
    count(context, 1 + static_cast<std::size_t>(namespaceCount + attributeCount));
  }

  static void escapeNames(void* context) {
    const xmlNode* element = static_cast<xmlParserCtxt*>(context)->node;
    if (element == nullptr) return;  // there was no memory for it
    Parser::guarded(context, [&] {
      for (xmlNs* space = element->nsDef; space != nullptr; space = space->next) escapeName(*space);
    });
  }

  // Each walks along all those of its element that came before. The library writes default values
  // as they are, too.
  static void attributeDeclaration(void* context, const xmlChar* element, const xmlChar* name,
                                   int type, int kind, const xmlChar* value,
                                   xmlEnumeration* choices) {
    std::string text;
    Parser::guarded(context, [&] { text = escaped(value); });
    const xmlChar* const kept = value == nullptr ? nullptr : BAD_CAST text.c_str();
    xmlSAX2AttributeDecl(context, element, name, type, kind, kept, choices);
    count(context, 1);
    if (++of(context)._declaredAttributes > kMaximumDeclaredAttributes) Parser::refuse(context);
  }

  // The text is read as markup where the entity is used. As a node it counts when the library asks
  // for it right behind.
  static void entityDeclaration(void* context, const xmlChar* name, int type, const xmlChar* id,
                                const xmlChar* system, xmlChar* text) {
    xmlSAX2EntityDecl(context, name, type, id, system, text);
    if (text != nullptr && !hasShortMarkup(reinterpret_cast<const char*>(text)))
      Parser::refuse(context);
  }

  static xmlEntity* entityNamed(void* context, const xmlChar* name) {
    count(context, 1);
    const auto* parser = static_cast<const xmlParserCtxt*>(context);
    xmlEntity* known = xmlSAX2GetEntity(context, name);
    const bool othersOutside = parser->hasExternalSubset != 0 || parser->hasPErefs != 0;
    if (known != nullptr || parser->standalone == 1 || !othersOutside) return known;
    return outsideEntity(of(context)._outside.get(), name);
  }

  static xmlEntity* outsideEntity(xmlDoc* outside, const xmlChar* name) {
    if (xmlEntity* known = xmlGetDocEntity(outside, name)) return known;
    return xmlAddDocEntity(outside, name, XML_INTERNAL_GENERAL_ENTITY, nullptr, nullptr,
                           BAD_CAST "");
  }

  // Used together, parameter entities make declarations of any length.
  static xmlEntity* parameterEntityNamed(void* context, const xmlChar* name) {
    count(context, 1);
    xmlEntity* entity = xmlSAX2GetParameterEntity(context, name);
    if (entity == nullptr) return nullptr;
    Building& building = of(context);
    building._inserted += static_cast<std::size_t>(entity->length);
    if (building._inserted > kMaximumMarkup) Parser::refuse(context);
    return entity;
  }

  Document _outside;
  std::size_t _nodes = 0;
  std::size_t _declaredAttributes = 0;
  std::size_t _inserted =
      0;  // bytes that parameter entities stand for, at each use and when declared
};

xmlSAXHandler Building::handler() {
  xmlSAXHandler sax{};
  xmlSAXVersion(&sax, 2);
  sax.startElementNs = element;
  sax.comment = Counted<xmlSAX2Comment>::take;
  sax.processingInstruction = Counted<xmlSAX2ProcessingInstruction>::take;
  sax.cdataBlock = Counted<xmlSAX2CDataBlock>::take;
  sax.elementDecl = Counted<xmlSAX2ElementDecl>::take;
  sax.notationDecl = Counted<xmlSAX2NotationDecl>::take;
  sax.unparsedEntityDecl = Counted<xmlSAX2UnparsedEntityDecl>::take;
  sax.attributeDecl = attributeDeclaration;
  sax.entityDecl = entityDeclaration;
  sax.getEntity = entityNamed;
  sax.getParameterEntity = parameterEntityNamed;
  return sax;
}

struct BufferDeleter {
  void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};

}  // namespace

void DocumentDeleter::operator()(_xmlDoc* document) const {
  xmlFreeDoc(document);
}

Document parse(std::string_view bytes) {
  const XmlWork work;
  Building building;
  Parser parser(bytes, Building::handler(), &building);
  if (!parser.read()) return nullptr;
  Document document = parser.takeDocument();
  if (document) noteEncoding(*document, bytes);
  work.checkMemory();
  return document;
}

void reindent(_xmlDoc& document) {
  const XmlWork work;
  if (xmlNode* root = xmlDocGetRootElement(&document)) reindentElement(root, 0, false);
  work.checkMemory();
}

std::optional<std::string> serialize(_xmlDoc& document) {
  const XmlWork work;
  const std::unique_ptr<xmlBuffer, BufferDeleter> buffer(xmlBufferCreate());
  const auto* encoding = reinterpret_cast<const char*>(document.encoding);
  xmlSaveCtxt* saving = xmlSaveToBuffer(buffer.get(), encoding, saveOptions(document));
  // Null when nobody knows the encoding any more, which leaves no bytes.
  xmlSaveDoc(saving, &document);
  xmlSaveClose(saving);
  work.checkMemory();
  std::string bytes(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                    static_cast<std::size_t>(xmlBufferLength(buffer.get())));
  if (!parse(bytes)) return std::nullopt;
  return bytes;
}

}  // namespace installer::xml
