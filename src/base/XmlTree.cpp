#include "base/XmlTree.h"

#include "base/MarkupScan.h"
#include "base/XmlParser.h"
#include "base/XmlRewriting.h"
#include "base/XmlWork.h"

namespace installer::xml {

namespace {

constexpr std::size_t kMaximumDeclaredAttributes = 4096;

bool startsLikeUtf16(std::string_view bytes) {
  using namespace std::string_view_literals;
  return bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv) ||
         bytes.starts_with("<\0"sv) || bytes.starts_with("\0<"sv);
}

// Notes the encoding that a document without a declared one is in, so that it is kept.
void noteEncoding(xmlDoc& document, std::string_view bytes) {
  if (document.encoding != nullptr) return;
  document.encoding = library().xmlCharStrdup(startsLikeUtf16(bytes) ? "UTF-16" : "UTF-8");
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
  if (textOf(space.href) == name) return;
  (*library().xmlFreePlace)(const_cast<xmlChar*>(space.href));
  space.href = library().xmlCharStrdup(name.c_str());
}

xmlSAXHandler builtInHandler() {
  xmlSAXHandler sax{};
  library().xmlSAXVersion(&sax, 2);
  return sax;
}

// The library's own handlers, which build the document.
const xmlSAXHandler& builtIn() {
  static const xmlSAXHandler sax = builtInHandler();
  return sax;
}

// Takes the parser's events for those handlers.
//
// Where a document's entities may be declared outside of it, a reference to one that is not known
// is no error. The library keeps such a reference in text and drops it from attributes, so that
// each is given an empty entity of its own while the document is read, which is never part of it.
class Building {
 public:
  Building() : _outside(library().xmlNewDoc(BAD_CAST "1.0")) {
    library().xmlCreateIntSubset(_outside.get(), BAD_CAST "outside", nullptr, nullptr);
  }

  static xmlSAXHandler handler();

 private:
  // The library's own handler, with one node counted.
  template <auto Build>
  struct Counted;
  template <class... Arguments, void (*xmlSAXHandler::*Build)(void*, Arguments...)>
  struct Counted<Build> {
    static void take(void* context, Arguments... arguments) {
      (builtIn().*Build)(context, arguments...);
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
    builtIn().startElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
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
    builtIn().attributeDecl(context, element, name, type, kind, kept, choices);
    count(context, 1);
    if (++of(context)._declaredAttributes > kMaximumDeclaredAttributes) Parser::refuse(context);
  }

  // The text is read as markup where the entity is used. As a node it counts when the library asks
  // for it right behind.
  static void entityDeclaration(void* context, const xmlChar* name, int type, const xmlChar* id,
                                const xmlChar* system, xmlChar* text) {
    builtIn().entityDecl(context, name, type, id, system, text);
    if (text != nullptr && !hasShortMarkup(reinterpret_cast<const char*>(text)))
      Parser::refuse(context);
  }

  static xmlEntity* entityNamed(void* context, const xmlChar* name) {
    count(context, 1);
    const auto* parser = static_cast<const xmlParserCtxt*>(context);
    xmlEntity* known = builtIn().getEntity(context, name);
    const bool othersOutside = parser->hasExternalSubset != 0 || parser->hasPErefs != 0;
    if (known != nullptr || parser->standalone == 1 || !othersOutside) return known;
    return outsideEntity(of(context)._outside.get(), name);
  }

  static xmlEntity* outsideEntity(xmlDoc* outside, const xmlChar* name) {
    if (xmlEntity* known = library().xmlGetDocEntity(outside, name)) return known;
    return library().xmlAddDocEntity(outside, name, XML_INTERNAL_GENERAL_ENTITY, nullptr, nullptr,
                                     BAD_CAST "");
  }

  // Used together, parameter entities make declarations of any length.
  static xmlEntity* parameterEntityNamed(void* context, const xmlChar* name) {
    count(context, 1);
    xmlEntity* entity = builtIn().getParameterEntity(context, name);
    if (entity == nullptr) return nullptr;
    Building& building = of(context);
    building._inserted += static_cast<std::size_t>(entity->length);
    if (building._inserted > kMaximumMarkup) Parser::refuse(context);
    return entity;
  }

  Tree _outside;
  std::size_t _nodes = 0;
  std::size_t _declaredAttributes = 0;
  std::size_t _inserted =
      0;  // bytes that parameter entities stand for, at each use and when declared
};

xmlSAXHandler Building::handler() {
  xmlSAXHandler sax = builtIn();
  sax.startElementNs = element;
  sax.comment = Counted<&xmlSAXHandler::comment>::take;
  sax.processingInstruction = Counted<&xmlSAXHandler::processingInstruction>::take;
  sax.cdataBlock = Counted<&xmlSAXHandler::cdataBlock>::take;
  sax.elementDecl = Counted<&xmlSAXHandler::elementDecl>::take;
  sax.notationDecl = Counted<&xmlSAXHandler::notationDecl>::take;
  sax.unparsedEntityDecl = Counted<&xmlSAXHandler::unparsedEntityDecl>::take;
  sax.attributeDecl = attributeDeclaration;
  sax.entityDecl = entityDeclaration;
  sax.getEntity = entityNamed;
  sax.getParameterEntity = parameterEntityNamed;
  return sax;
}

}  // namespace

void TreeDeleter::operator()(xmlDoc* document) const {
  library().xmlFreeDoc(document);
}

Tree treeOf(std::string_view bytes) {
  const XmlWork work;
  Building building;
  Parser parser(bytes, Building::handler(), &building);
  if (!parser.read()) return nullptr;
  Tree document(parser.takeDocument());
  if (document) noteEncoding(*document, bytes);
  work.checkMemory();
  return document;
}

}  // namespace installer::xml
