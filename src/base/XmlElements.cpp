#include "base/XmlElements.h"

#include <string>

#include "base/PlainReader.h"
#include "base/XmlParser.h"

namespace installer::xml {

namespace {

// Takes the library's events for a receiver. After the first one that is not wanted no others come.
class Handing {
 public:
  explicit Handing(ElementReceiver& receiver) : _receiver(receiver) {}

  static xmlSAXHandler handler();

 private:
  template <class Step>
  static void step(void* context, Step take) {
    auto& receiver = Parser::receiverOf<Handing>(context)._receiver;
    bool wanted = true;
    Parser::guarded(context, [&] { wanted = take(receiver); });
    if (!wanted) Parser::refuse(context);
  }

  // A name with a prefix is no other's: nobody is told about it.
  static void open(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar*, int,
                   const xmlChar**, int, int, const xmlChar**) {
    if (prefix != nullptr) return Parser::refuse(context);
    step(context, [&](ElementReceiver& receiver) {
      return receiver.open(reinterpret_cast<const char*>(name));
    });
  }
  static void close(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    step(context, [](ElementReceiver& receiver) { return receiver.close(); });
  }
  static void text(void* context, const xmlChar* bytes, int size) {
    step(context, [&](ElementReceiver& receiver) {
      return receiver.text({reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)});
    });
  }

  static void refuseElement(void* context, const xmlChar*, int, xmlElementContent*) {
    Parser::refuse(context);
  }
  static void refuseAttribute(void* context, const xmlChar*, const xmlChar*, int, int,
                              const xmlChar*, xmlEnumeration* choices) {
    library().xmlFreeEnumeration(choices);
    Parser::refuse(context);
  }
  static void refuseNotation(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    Parser::refuse(context);
  }
  static void refuseEntity(void* context, const xmlChar*, int, const xmlChar*, const xmlChar*,
                           xmlChar*) {
    Parser::refuse(context);
  }
  static void refuseUnparsedEntity(void* context, const xmlChar*, const xmlChar*, const xmlChar*,
                                   const xmlChar*) {
    Parser::refuse(context);
  }
  // Asked only for entities that XML itself does not define.
  static xmlEntity* refuseReference(void* context, const xmlChar*) {
    Parser::refuse(context);
    return nullptr;
  }

  ElementReceiver& _receiver;
};

xmlSAXHandler Handing::handler() {
  xmlSAXHandler sax{};
  sax.startElementNs = open;
  sax.endElementNs = close;
  sax.characters = text;
  sax.ignorableWhitespace = text;
  sax.elementDecl = refuseElement;
  sax.attributeDecl = refuseAttribute;
  sax.notationDecl = refuseNotation;
  sax.entityDecl = refuseEntity;
  sax.unparsedEntityDecl = refuseUnparsedEntity;
  sax.getEntity = refuseReference;
  sax.getParameterEntity = refuseReference;
  return sax;
}

bool handText(const PlainReader& reader, std::string& buffer, ElementReceiver& receiver) {
  if (reader.isCanonical()) return receiver.text(reader.content());
  buffer.clear();
  appendDecoded(reader.content(), buffer);
  return receiver.text(buffer);
}

}  // namespace

bool readElements(std::string_view bytes, std::string_view usualType, ElementReceiver& receiver) {
  const std::optional<bool> read = readPlainElements(bytes, usualType, receiver);
  return read ? *read : readAnyElements(bytes, receiver);
}

// What is not wanted is so whoever reads, and whatever comes behind it.
std::optional<bool> readPlainElements(std::string_view bytes, std::string_view usualType,
                                      ElementReceiver& receiver) {
  using Piece = PlainReader::Piece;
  PlainReader reader(bytes);
  receiver.begin();
  std::string buffer;
  while (true) {
    bool wanted = true;
    switch (reader.next()) {
      case Piece::start:
        wanted = receiver.open(reader.name());
        break;
      case Piece::end:
        wanted = receiver.close();
        break;
      case Piece::text:
        wanted = handText(reader, buffer, receiver);
        break;
      case Piece::section:
        wanted = receiver.text(reader.content());
        break;
      case Piece::comment:
      case Piece::instruction:
        break;
      case Piece::documentType:
        if (reader.content() != usualType) return std::nullopt;
        break;
      case Piece::finish:
        return true;
      case Piece::unusual:
        return std::nullopt;
    }
    if (!wanted) return false;
  }
}

bool readAnyElements(std::string_view bytes, ElementReceiver& receiver) {
  receiver.begin();
  Handing handing(receiver);
  return Parser(bytes, Handing::handler(), &handing).read();
}

}  // namespace installer::xml
