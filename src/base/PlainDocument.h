#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "base/XmlRewriting.h"

namespace installer::xml {

class PlainReader;

// A plain document (see PlainReader), held as the pieces in which it will be written. It is written
// to the byte as LibraryDocument writes it.
class PlainDocument : public RewritableDocument {
 public:
  // Takes the bytes. Null when they are not plain, or declare a document type: then they are given
  // back.
  static Document parse(std::string& bytes);

  Element root() const override;
  std::vector<Element> childrenNamed(Element parent, std::string_view name) const override;
  void changeAttributes(const std::vector<Element>& elements, std::string_view name,
                        const Change& change) override;
  [[nodiscard]] std::optional<std::string> serialize() const override;

 private:
  enum class Kind : std::uint8_t { element, text, blanks, section, comment, instruction };

  // What belongs to it lies behind it. A document may have a million of these.
  struct Node {
    std::string_view written;    // of an element its start tag: name="value", single blanks between
    std::uint32_t size;          // nodes that it and all below it are
    std::uint16_t nameSize = 0;  // of an element, bytes
    Kind kind;
  };

  explicit PlainDocument(std::string&& bytes) : _bytes(std::move(bytes)) {}

  bool read();
  void noteHead(const PlainReader& reader);
  bool open(const PlainReader& reader);
  void close();
  void addText(const PlainReader& reader);
  bool addSection(const PlainReader& reader);
  bool add(std::string_view written, Kind kind);
  std::string_view keep(std::string text);
  void changeAttribute(Node& element, std::string_view name, const Change& change);

  static bool holdsOnlyElements(const Node& element);
  static void write(const Node& node, int level, bool evenly, std::string& to);
  static void writeElement(const Node& element, int level, bool evenly, std::string& to);

  std::string _bytes;
  std::deque<std::string> _kept;   // what is not written as it was read
  std::string _head;               // the declaration
  std::vector<Node> _nodes;        // each before its children
  std::vector<std::size_t> _open;  // elements that are being read
  std::size_t _count = 0;          // of what counts as nodes: attributes, too
};

}  // namespace installer::xml
