#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "base/XmlLibrary.h"
#include "base/XmlWork.h"

namespace installer::xml {

inline constexpr int kMaximumAttributes = 64;  // of one element, declared defaults among them
inline constexpr int kMaximumNamespaces = 64;  // declared by one element and all around it

// The one way in which libxml2 reads: one parser at work on one document. Documents come from other
// people. Nothing outside of them is loaded, nothing is written to standard error, the
// first error ends the work, and what the library does in quadratic time is bounded: the length of
// markup (see hasShortMarkup) and the attributes and namespaces of an element. Only for sources
// that use libxml2.
class Parser {
 public:
  // `handler` takes the parser's events. Their first argument is always a context of the library's,
  // for which of() gives this object. `receiver` is the handlers' own.
  Parser(std::string_view bytes, const xmlSAXHandler& handler, void* receiver);
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  // Whether the whole document is well-formed and within the bounds, and nobody refused it. Throws
  // std::bad_alloc when the reading ended for want of memory.
  [[nodiscard]] bool read();

  // What the library's own handlers have built, now the caller's; null without them.
  [[nodiscard]] xmlDoc* takeDocument();

  static Parser& of(void* context);

  template <class Receiver>
  static Receiver& receiverOf(void* context) {
    return *static_cast<Receiver*>(of(context)._receiver);
  }

  // Called by a handler: no more events follow, and the document will not have been read.
  static void refuse(void* context);

  // What a handler does that asks for memory, it does in here: no exception may pass through the
  // library's C. One that there is ends the reading, and read() throws it.
  template <class Step>
  static void guarded(void* context, Step step) {
    try {
      step();
    } catch (const std::bad_alloc&) {
      of(context)._lacksMemory = true;
      refuse(context);
    }
  }

 private:
  struct ContextDeleter {
    void operator()(xmlParserCtxt* context) const;
  };

  xmlSAXHandler guardedHandler() const;
  std::string_view decodedRest();
  [[nodiscard]] bool enter(int namespaces, int attributes);
  [[nodiscard]] bool atEnd() const;

  static void startDocument(void* context);
  static void startElement(void* context, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                           int attributeCount, int defaultCount, const xmlChar** attributes);
  static void endElement(void* context, const xmlChar* name, const xmlChar* prefix,
                         const xmlChar* uri);

  XmlWork _work;
  xmlSAXHandler _handler;
  void* _receiver;
  bool _refused = false;
  bool _lacksMemory = false;
  std::vector<int> _namespaces;                             // declared by each open element
  int _inScope = 0;                                         // their sum
  std::unique_ptr<xmlParserCtxt, ContextDeleter> _context;  // null for a document that is too long
};

}  // namespace installer::xml
