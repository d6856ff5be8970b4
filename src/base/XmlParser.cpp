#include "base/XmlParser.h"

#include <climits>
#include <utility>

#include "base/MarkupScan.h"

namespace installer::xml {

namespace {

xmlParserCtxt* contextFor(std::string_view bytes) {
  if (bytes.size() > INT_MAX) return nullptr;
  return library().xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size()));
}

// After its first error the library reads on, without events and so without anybody to stop it.
// xmlStopParser() would free the bytes under the functions that have just found the error.
// The library's versions differ in the type of the second argument.
template <class Error>
void endAtError(void*, Error error) {
  if (error->level == XML_ERR_FATAL && error->ctxt != nullptr)
    static_cast<xmlParserCtxt*>(error->ctxt)->instate = XML_PARSER_EOF;
}

}  // namespace

void Parser::ContextDeleter::operator()(xmlParserCtxt* context) const {
  library().xmlFreeDoc(context->myDoc);  // made by some declarations, whatever the handlers
  library().xmlFreeParserCtxt(context);
}

Parser::Parser(std::string_view bytes, const xmlSAXHandler& handler, void* receiver)
    : _handler(handler), _receiver(receiver), _context(contextFor(bytes)) {
  if (!_context) return;
  *_context->sax = guardedHandler();
  _context->_private = this;  // handed on to the contexts in which entities are read
  library().xmlCtxtUseOptions(_context.get(), XML_PARSE_NONET);
}

xmlSAXHandler Parser::guardedHandler() const {
  xmlSAXHandler handler = _handler;
  handler.initialized = XML_SAX2_MAGIC;
  handler.startDocument = startDocument;
  handler.startElementNs = startElement;
  handler.endElementNs = endElement;
  handler.serror = endAtError;
  return handler;
}

bool Parser::read() {
  if (_context) library().xmlParseDocument(_context.get());
  if (_lacksMemory) throw std::bad_alloc();
  _work.checkMemory();
  return _context && !_refused && _context->wellFormed != 0 && atEnd();
}

xmlDoc* Parser::takeDocument() {
  return _context ? std::exchange(_context->myDoc, nullptr) : nullptr;
}

Parser& Parser::of(void* context) {
  return *static_cast<Parser*>(static_cast<xmlParserCtxt*>(context)->_private);
}

void Parser::refuse(void* context) {
  of(context)._refused = true;
  library().xmlStopParser(static_cast<xmlParserCtxt*>(context));
}

// All that follows in the document. Without an encoder it is there already. With one the library
// decodes as it goes along and only when it runs short, so that it has to believe itself at the end
// of what it has.
std::string_view Parser::decodedRest() {
  xmlParserInput* input = _context->input;
  const auto place = input->cur - input->base;
  while (input->buf->encoder != nullptr) {
    input->cur = input->end;
    if (library().xmlParserInputGrow(input, INPUT_CHUNK) <= 0) break;
  }
  input->cur = input->base + place;
  return {reinterpret_cast<const char*>(input->cur),
          static_cast<std::size_t>(input->end - input->cur)};
}

bool Parser::enter(int namespaces, int attributes) {
  _namespaces.push_back(namespaces);
  _inScope += namespaces;
  return namespaces + attributes <= kMaximumAttributes && _inScope <= kMaximumNamespaces;
}

// The library takes a zero byte behind the root element for the end of the document.
bool Parser::atEnd() const {
  const xmlParserInput* input = _context->input;
  return input != nullptr && input->cur >= input->end;
}

// Comes behind the declaration, when the encoding is known.
void Parser::startDocument(void* context) {
  Parser& parser = of(context);
  if (!hasShortMarkup(parser.decodedRest())) return refuse(context);
  if (parser._handler.startDocument != nullptr) parser._handler.startDocument(context);
}

void Parser::startElement(void* context, const xmlChar* name, const xmlChar* prefix,
                          const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                          int attributeCount, int defaultCount, const xmlChar** attributes) {
  Parser& parser = of(context);
  bool entered = false;
  guarded(context, [&] { entered = parser.enter(namespaceCount, attributeCount); });
  if (!entered) return refuse(context);
  parser._handler.startElementNs(context, name, prefix, uri, namespaceCount, namespaces,
                                 attributeCount, defaultCount, attributes);
}

void Parser::endElement(void* context, const xmlChar* name, const xmlChar* prefix,
                        const xmlChar* uri) {
  Parser& parser = of(context);
  parser._inScope -= parser._namespaces.back();
  parser._namespaces.pop_back();
  parser._handler.endElementNs(context, name, prefix, uri);
}

}  // namespace installer::xml
