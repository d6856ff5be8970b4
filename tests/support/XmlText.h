#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace installer::test {

// One node of a document as libxml2 reads it, texts in UTF-8. Entity references other than the five
// built-in and the numeric ones are kept as nodes.
struct XmlNode {
  enum class Kind { element, text, cdata, comment, instruction, reference };

  Kind kind = Kind::element;
  std::string name;  // of an element (with its prefix), instruction or reference
  std::string text;
  std::vector<std::pair<std::string, std::string>> attributes;  // namespaces first
  std::vector<XmlNode> children;

  std::vector<const XmlNode*> elements() const;
  std::vector<XmlNode*> elements(const std::string& named);
  std::string* attribute(const std::string& named);
  // The text and CDATA directly below, joined.
  std::string wholeText() const;

  friend bool operator==(const XmlNode&, const XmlNode&) = default;
};

struct XmlDocument {
  std::string documentType;  // the DOCTYPE, "" when there is none
  std::vector<XmlNode> top;  // comments, instructions and the root element

  // nullopt when the text is not well-formed.
  static std::optional<XmlDocument> parse(const std::string& text);

  const XmlNode& root() const;
  XmlNode& root();
};

// Drops the white space that only sets elements apart: in elements that hold no other text.
void dropIndentation(XmlNode& element);

// One node a line, indented, for messages and comparison.
std::string described(const XmlNode& node, int depth = 0);

}  // namespace installer::test
