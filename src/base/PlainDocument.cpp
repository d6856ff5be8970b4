#include "base/PlainDocument.h"

#include <algorithm>
#include <utility>

#include "base/PlainReader.h"
#include "base/XmlBlanks.h"
#include "base/XmlEscapes.h"
#include "base/XmlTree.h"

namespace installer::xml {

namespace {

std::string startTag(const PlainReader& reader) {
  std::string tag(reader.name());
  for (const PlainReader::Attribute& attribute : reader.attributes()) {
    tag.append(" ").append(attribute.name).append("=\"");
    appendEscapedValue(decodedValue(attribute.value), tag);
    tag += '"';
  }
  return tag;
}

std::string instruction(const PlainReader& reader) {
  const std::string_view data = reader.content().substr(reader.name().size());
  const std::size_t begin = std::min(data.find_first_not_of(" \t\n"), data.size());
  return std::string(reader.name()).append(" ").append(data.substr(begin));
}

// Where the attribute's value begins and how many bytes it has; nullopt without the attribute.
struct Place {
  std::size_t begin = 0;
  std::size_t size = 0;
};
std::optional<Place> valueIn(std::string_view tag, std::size_t nameSize, std::string_view name) {
  for (std::size_t at = nameSize; at < tag.size();) {
    const std::size_t sign = tag.find('=', at);
    const std::size_t begin = sign + 2;
    const std::size_t end = tag.find('"', begin);
    if (tag.substr(at + 1, sign - at - 1) == name) return Place{begin, end - begin};
    at = end + 1;
  }
  return std::nullopt;
}

void breakLine(int level, std::string& to) {
  to += '\n';
  to.append(static_cast<std::size_t>(level) * kBlanksALevel, ' ');
}

bool isPlain(std::string_view bytes) {
  PlainReader reader(bytes);
  PlainReader::Piece piece = reader.next();
  while (piece != PlainReader::Piece::finish && piece != PlainReader::Piece::unusual)
    piece = reader.next();
  return piece == PlainReader::Piece::finish;
}

}  // namespace

Document PlainDocument::parse(std::string& bytes) {
  Document document(new PlainDocument(std::move(bytes)));
  auto& plain = static_cast<PlainDocument&>(*document);
  if (plain.read()) return document;
  bytes = std::move(plain._bytes);
  return nullptr;
}

bool PlainDocument::read() {
  using Piece = PlainReader::Piece;
  PlainReader reader(_bytes);
  noteHead(reader);
  while (true) {
    switch (reader.next()) {
      case Piece::start:
        if (!open(reader)) return false;
        break;
      case Piece::end:
        close();
        break;
      case Piece::text:
        addText(reader);
        break;
      case Piece::section:
        if (!addSection(reader)) return false;
        break;
      case Piece::comment:
        if (!add(reader.content(), Kind::comment)) return false;
        break;
      case Piece::instruction: {
        const bool bare = reader.content() == reader.name();
        if (!add(bare ? reader.content() : keep(instruction(reader)), Kind::instruction))
          return false;
        break;
      }
      case Piece::finish:
        return true;
      case Piece::documentType:
      case Piece::unusual:
        return false;
    }
  }
}

void PlainDocument::noteHead(const PlainReader& reader) {
  if (!reader.hasDeclaration()) return;
  const std::string_view encoding = reader.encoding();
  _head.append("<?xml version=\"1.0\" encoding=\"")
      .append(encoding.empty() ? "UTF-8" : encoding)
      .append("\"");
  if (!reader.standalone().empty())
    _head.append(" standalone=\"").append(reader.standalone()).append("\"");
  _head.append("?>\n");
}

bool PlainDocument::open(const PlainReader& reader) {
  _open.push_back(_nodes.size());
  _count += reader.attributes().size();
  const std::string_view tag = reader.isCanonical() ? reader.content() : keep(startTag(reader));
  if (!add(tag, Kind::element)) return false;
  _nodes.back().nameSize = static_cast<std::uint16_t>(reader.name().size());
  return true;
}

void PlainDocument::close() {
  Node& element = _nodes[_open.back()];
  element.size = static_cast<std::uint32_t>(_nodes.size() - _open.back());
  _open.pop_back();
}

void PlainDocument::addText(const PlainReader& reader) {
  if (reader.isCanonical()) {
    const Kind kind = isBlank(reader.content()) ? Kind::blanks : Kind::text;
    _nodes.push_back({reader.content(), 1, 0, kind});
    return;
  }
  const std::string text = decoded(reader.content());
  std::string written;
  appendEscaped(text, written);
  _nodes.push_back({keep(std::move(written)), 1, 0, isBlank(text) ? Kind::blanks : Kind::text});
}

// The library makes one of two that follow each other. Whether something is between them is for it
// to tell.
bool PlainDocument::addSection(const PlainReader& reader) {
  return _nodes.back().kind != Kind::section && add(reader.content(), Kind::section);
}

// False when it is one too many.
bool PlainDocument::add(std::string_view written, Kind kind) {
  _nodes.push_back({written, 1, 0, kind});
  return ++_count <= kMaximumNodes;
}

std::string_view PlainDocument::keep(std::string text) {
  return _kept.emplace_back(std::move(text));
}

RewritableDocument::Element PlainDocument::root() const {
  const Node* node = _nodes.data();
  while (node->kind != Kind::element) ++node;  // comments and instructions
  return node;
}

std::vector<RewritableDocument::Element> PlainDocument::childrenNamed(Element parent,
                                                                      std::string_view name) const {
  std::vector<Element> children;
  const Node* const element = static_cast<const Node*>(parent);
  for (const Node* child = element + 1; child != element + element->size; child += child->size)
    if (child->kind == Kind::element && child->written.substr(0, child->nameSize) == name)
      children.push_back(child);
  return children;
}

void PlainDocument::changeAttributes(const std::vector<Element>& elements, std::string_view name,
                                     const Change& change) {
  for (const Element element : elements)
    changeAttribute(
        _nodes[static_cast<std::size_t>(static_cast<const Node*>(element) - _nodes.data())], name,
        change);
}

void PlainDocument::changeAttribute(Node& element, std::string_view name, const Change& change) {
  const std::string_view tag = element.written;
  const std::optional<Place> place = valueIn(tag, element.nameSize, name);
  if (!place) return;
  std::string changed(tag.substr(0, place->begin));
  appendEscapedValue(change(decoded(tag.substr(place->begin, place->size))), changed);
  changed += tag.substr(place->begin + place->size);
  if (changed != tag) element.written = keep(std::move(changed));
}

bool PlainDocument::holdsOnlyElements(const Node& element) {
  bool anyElement = false;
  for (const Node* child = &element + 1; child != &element + element.size; child += child->size) {
    if (child->kind == Kind::text || child->kind == Kind::section) return false;
    anyElement = anyElement || child->kind == Kind::element;
  }
  return anyElement;
}

void PlainDocument::write(const Node& node, int level, bool evenly, std::string& to) {
  switch (node.kind) {
    case Kind::element:
      return writeElement(node, level, evenly, to);
    case Kind::text:
    case Kind::blanks:
      to += node.written;
      break;
    case Kind::section:
      to.append("<![CDATA[").append(node.written).append("]]>");
      break;
    case Kind::comment:
      to.append("<!--").append(node.written).append("-->");
      break;
    case Kind::instruction:
      to.append("<?").append(node.written).append("?>");
      break;
  }
}

void PlainDocument::writeElement(const Node& element, int level, bool evenly, std::string& to) {
  to.append("<").append(element.written);
  if (element.size == 1) {
    to.append("/>");
    return;
  }
  to.append(">");
  const bool ownLines = evenly && holdsOnlyElements(element);
  for (const Node* child = &element + 1; child != &element + element.size; child += child->size) {
    if (ownLines && child->kind == Kind::blanks) continue;
    if (ownLines) breakLine(level + 1, to);
    write(*child, level + 1, ownLines, to);
  }
  if (ownLines) breakLine(level, to);
  to.append("</").append(element.written.substr(0, element.nameSize)).append(">");
}

std::optional<std::string> PlainDocument::serialize() const {
  std::string bytes;
  bytes.reserve(_bytes.size() + _bytes.size() / 4);  // the new indentation and locations
  bytes += _head;
  for (const Node* node = _nodes.data(); node != _nodes.data() + _nodes.size();
       node += node->size) {
    write(*node, 0, true, bytes);
    bytes += '\n';
  }
  if (!isPlain(bytes) && !treeOf(bytes)) return std::nullopt;
  return bytes;
}

}  // namespace installer::xml
