#include "base/XmlPropertyListReader.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <array>
#include <charconv>
#include <climits>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "base/Base64.h"
#include "base/PropertyListDate.h"
#include "base/QuietXml.h"

namespace installer::PropertyList {

namespace {

constexpr std::string_view kUidKey = "CF$UID";
constexpr std::string_view kBlanks = " \t\r\n";

enum class Tag { plist, dict, array, key, string, integer, real, date, data, yes, no };

std::optional<Tag> tagNamed(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, Tag>, 11> tags{{{"key", Tag::key},
                                                                   {"string", Tag::string},
                                                                   {"dict", Tag::dict},
                                                                   {"array", Tag::array},
                                                                   {"integer", Tag::integer},
                                                                   {"true", Tag::yes},
                                                                   {"false", Tag::no},
                                                                   {"real", Tag::real},
                                                                   {"date", Tag::date},
                                                                   {"data", Tag::data},
                                                                   {"plist", Tag::plist}}};
  for (const auto& [text, tag] : tags)
    if (text == name) return tag;
  return std::nullopt;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(kBlanks) == std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<std::uint64_t> magnitude(std::string_view digits) {
  int base = 10;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    base = 16;
    digits.remove_prefix(2);
  }
  std::uint64_t number{};
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
  if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
  return number;
}

std::optional<Value> negative(std::uint64_t number) {
  constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
  if (number > lowest) return std::nullopt;
  if (number == lowest) return Value(std::numeric_limits<std::int64_t>::min());
  return Value(-static_cast<std::int64_t>(number));
}

// Decimal or "0x" hexadecimal, with or without a sign.
std::optional<Value> integerFromText(std::string_view text) {
  const bool minus = text.starts_with('-');
  if (minus || text.starts_with('+')) text.remove_prefix(1);
  const std::optional<std::uint64_t> number = magnitude(text);
  if (!number) return std::nullopt;
  return minus ? negative(*number) : Value(*number);
}

// A number that a double cannot hold, be it too small, is not understood: writing it back would
// change it. The platform's "+infinity" and "nan" are.
std::optional<Value> realFromText(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return Value(number);
}

std::optional<Value> dataFromText(std::string_view text) {
  std::optional<std::string> bytes = decodeBase64(text);
  if (!bytes) return std::nullopt;
  return Value(Data{*std::move(bytes)});
}

std::optional<Value> dateValueFromText(std::string_view text) {
  const std::optional<Date> date = dateFromText(text);
  if (!date) return std::nullopt;
  return Value(*date);
}

std::optional<Value> flagFromText(bool flag, std::string_view text) {
  if (!text.empty()) return std::nullopt;
  return Value(flag);
}

std::optional<Value> leafFromText(Tag tag, std::string&& text) {
  switch (tag) {
    case Tag::integer:
      return integerFromText(trimmed(text));
    case Tag::real:
      return realFromText(trimmed(text));
    case Tag::date:
      return dateValueFromText(trimmed(text));
    case Tag::data:
      return dataFromText(text);
    case Tag::yes:
    case Tag::no:
      return flagFromText(tag == Tag::yes, trimmed(text));
    default:
      return Value(std::move(text));
  }
}

// {CF$UID: 5} is the XML form of an object reference.
Value dictionaryOrUid(Dictionary&& dictionary) {
  const Value* number = dictionary.size() == 1 ? dictionary.find(kUidKey) : nullptr;
  if (number == nullptr) return Value(std::move(dictionary));
  if (const auto* large = number->as<std::uint64_t>()) return Value(Uid{*large});
  const auto* small = number->as<std::int64_t>();
  if (small == nullptr || *small < 0) return Value(std::move(dictionary));
  return Value(Uid{static_cast<std::uint64_t>(*small)});
}

// Puts the parser's events together. After the first one that does not belong to a property list
// nothing more is looked at.
class Builder {
 public:
  // False from the first thing that is no property list on.
  bool good() const { return _good; }
  void fail() { _good = false; }

  void open(std::string_view name) {
    const std::optional<Tag> tag = tagNamed(name);
    if (!tag || _leaf || !fits(*tag)) return fail();
    _anyElement = true;
    if (*tag == Tag::plist) return;
    if (++_objects > kMaximumObjects) return fail();
    if (*tag == Tag::dict || *tag == Tag::array) return openContainer(*tag);
    _leaf = tag;
    _text.clear();
  }

  void text(std::string_view bytes) {
    if (_leaf)
      _text += bytes;
    else if (!isBlank(bytes))
      fail();
  }

  void close() {
    if (_leaf) return closeLeaf();
    if (!_open.empty()) closeContainer();  // otherwise the "plist" element ends
  }

  std::optional<Value> take() {
    if (!_good) return std::nullopt;
    return std::move(_root);
  }

 private:
  struct Container {
    Tag tag;
    Array array;
    Dictionary dictionary;
    std::optional<std::string> key;  // the one whose value comes next
  };

  bool fits(Tag tag) const {
    if (tag == Tag::plist) return !_anyElement;
    if (_open.empty()) return tag != Tag::key && !_root;
    if (_open.back().tag == Tag::array) return tag != Tag::key;
    return (tag == Tag::key) != _open.back().key.has_value();
  }

  void openContainer(Tag tag) {
    if (_open.size() >= kMaximumDepth) return fail();
    _open.push_back({tag, {}, {}, std::nullopt});
  }

  void closeLeaf() {
    const Tag tag = *std::exchange(_leaf, std::nullopt);
    if (tag == Tag::key) {
      _open.back().key = std::move(_text);
      return;
    }
    std::optional<Value> value = leafFromText(tag, std::move(_text));
    if (!value) return fail();
    add(*std::move(value));
  }

  void closeContainer() {
    Container container = std::move(_open.back());
    _open.pop_back();
    if (container.key) return fail();
    if (container.tag == Tag::array)
      add(Value(std::move(container.array)));
    else
      add(dictionaryOrUid(std::move(container.dictionary)));
  }

  void add(Value value) {
    if (_open.empty()) {
      _root = std::move(value);
      return;
    }
    Container& container = _open.back();
    if (container.tag == Tag::array) {
      container.array.push_back(std::move(value));
      return;
    }
    container.dictionary.set(*std::move(container.key), std::move(value));
    container.key.reset();
  }

  bool _good = true;
  bool _anyElement = false;
  std::size_t _objects = 0;  // keys and values so far
  std::vector<Container> _open;
  std::optional<Tag> _leaf;  // the open element that holds text
  std::string _text;         // of that element, so far
  std::optional<Value> _root;
};

// One parser at work on one document.
class Parser {
 public:
  explicit Parser(std::string_view bytes)
      : _context(xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size()))) {
    if (!_context) return;
    *_context->sax = handlers();
    _context->userData = this;
    xmlCtxtUseOptions(_context.get(), XML_PARSE_NONET);
  }

  std::optional<Value> read() {
    if (!_context) return std::nullopt;
    xmlParseDocument(_context.get());
    if (_context->wellFormed == 0 || !atEnd()) return std::nullopt;
    return _builder.take();
  }

 private:
  struct ContextDeleter {
    void operator()(xmlParserCtxt* context) const {
      xmlFreeDoc(context->myDoc);  // made by some declarations, even here
      xmlFreeParserCtxt(context);
    }
  };

  // The parser takes a zero byte behind the root element for the end of the document.
  bool atEnd() const {
    const xmlParserInput* input = _context->input;
    return input != nullptr && input->cur >= input->end;
  }

  static xmlSAXHandler handlers() {
    xmlSAXHandler sax{};
    sax.initialized = XML_SAX2_MAGIC;
    sax.startElementNs = open;
    sax.endElementNs = close;
    sax.characters = text;
    sax.ignorableWhitespace = text;
    sax.entityDecl = refuseEntity;
    sax.unparsedEntityDecl = refuseUnparsedEntity;
    sax.getEntity = refuseReference;
    sax.getParameterEntity = refuseReference;
    return sax;
  }

  static Parser& self(void* parser) { return *static_cast<Parser*>(parser); }

  template <class Step>
  void step(Step take) {
    if (!_builder.good()) return;
    take(_builder);
    if (!_builder.good()) xmlStopParser(_context.get());
  }

  static void open(void* parser, const xmlChar* name, const xmlChar* prefix, const xmlChar*, int,
                   const xmlChar**, int, int, const xmlChar**) {
    self(parser).step([&](Builder& builder) {
      if (prefix != nullptr) return builder.fail();
      builder.open(reinterpret_cast<const char*>(name));
    });
  }

  static void close(void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
    self(parser).step([](Builder& builder) { builder.close(); });
  }

  static void text(void* parser, const xmlChar* bytes, int size) {
    self(parser).step([&](Builder& builder) {
      builder.text({reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)});
    });
  }

  static void refuse(void* parser) {
    self(parser).step([](Builder& builder) { builder.fail(); });
  }
  static void refuseEntity(void* parser, const xmlChar*, int, const xmlChar*, const xmlChar*,
                           xmlChar*) {
    refuse(parser);
  }
  static void refuseUnparsedEntity(void* parser, const xmlChar*, const xmlChar*, const xmlChar*,
                                   const xmlChar*) {
    refuse(parser);
  }
  // Asked only for entities that XML itself does not define.
  static xmlEntityPtr refuseReference(void* parser, const xmlChar*) {
    refuse(parser);
    return nullptr;
  }

  Builder _builder;
  std::unique_ptr<xmlParserCtxt, ContextDeleter> _context;
};

}  // namespace

std::optional<Value> readXml(std::string_view bytes) {
  if (bytes.size() > INT_MAX) return std::nullopt;
  const QuietXml quiet;
  return Parser(bytes).read();
}

}  // namespace installer::PropertyList
