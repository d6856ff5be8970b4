#include "support/XmlText.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace installer::test {
namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isBlank(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return isBlank(c); });
}

void appendUtf8(unsigned long code, std::string& into) {
  if (code < 0x80) {
    into += static_cast<char>(code);
  } else if (code < 0x800) {
    into += static_cast<char>(0xC0 | (code >> 6));
    into += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    into += static_cast<char>(0xE0 | (code >> 12));
    into += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    into += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    into += static_cast<char>(0xF0 | (code >> 18));
    into += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    into += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    into += static_cast<char>(0x80 | (code & 0x3F));
  }
}

// False for an entity that only a DTD could explain.
bool appendEntity(const std::string& name, std::string& into) {
  if (name == "amp")
    into += '&';
  else if (name == "lt")
    into += '<';
  else if (name == "gt")
    into += '>';
  else if (name == "quot")
    into += '"';
  else if (name == "apos")
    into += '\'';
  else if (name.rfind("#x", 0) == 0)
    appendUtf8(std::strtoul(name.c_str() + 2, nullptr, 16), into);
  else if (name.rfind("#", 0) == 0)
    appendUtf8(std::strtoul(name.c_str() + 1, nullptr, 10), into);
  else
    return false;
  return true;
}

class Parser {
 public:
  explicit Parser(const std::string& text) : _text(text) {}

  std::optional<XmlDocument> document() {
    XmlDocument result;
    if (at("<?xml ")) result.declaration = upTo("?>");
    while (_place < _text.size() && !_failed) {
      if (isBlank(_text[_place])) {
        ++_place;
      } else if (at("<!DOCTYPE")) {
        result.documentType = documentType();
      } else {
        addNode(result.top);
      }
    }
    const auto roots = std::count_if(result.top.begin(), result.top.end(), [](const XmlNode& node) {
      return node.kind == XmlNode::Kind::element;
    });
    if (_failed || roots != 1) return std::nullopt;
    return result;
  }

 private:
  bool at(const char* text) const {
    return _text.compare(_place, std::string(text).size(), text) == 0;
  }

  std::string upTo(const std::string& end) {
    const std::size_t found = _text.find(end, _place);
    if (found == std::string::npos) {
      _failed = true;
      return "";
    }
    const std::string part = _text.substr(_place, found + end.size() - _place);
    _place = found + end.size();
    return part;
  }

  std::string documentType() {
    const std::size_t start = _place;
    const std::size_t bracket = _text.find('[', _place);
    if (bracket != std::string::npos && bracket < _text.find('>', _place)) upTo("]");
    upTo(">");
    return _text.substr(start, _place - start);
  }

  std::string name() {
    const std::size_t start = _place;
    while (_place < _text.size() &&
           std::string_view(" \t\r\n=/>?").find(_text[_place]) == std::string_view::npos)
      ++_place;
    if (_place == start) _failed = true;
    return _text.substr(start, _place - start);
  }

  void skipBlanks() {
    while (_place < _text.size() && isBlank(_text[_place])) ++_place;
  }

  void addNode(std::vector<XmlNode>& into) {
    if (at("<!--")) {
      const std::string part = upTo("-->");
      if (!_failed)
        into.push_back({XmlNode::Kind::comment, "", part.substr(4, part.size() - 7), {}, {}});
    } else if (at("<![CDATA[")) {
      const std::string part = upTo("]]>");
      if (!_failed)
        into.push_back({XmlNode::Kind::cdata, "", part.substr(9, part.size() - 12), {}, {}});
    } else if (at("<?")) {
      const std::string part = upTo("?>");
      if (!_failed)
        into.push_back({XmlNode::Kind::instruction, "", part.substr(2, part.size() - 4), {}, {}});
    } else if (at("<")) {
      into.push_back(element());
    } else {
      addText(into);
    }
  }

  void addText(std::vector<XmlNode>& into) {
    std::string text;
    const auto flush = [&] {
      if (!text.empty()) into.push_back({XmlNode::Kind::text, "", text, {}, {}});
      text.clear();
    };
    while (_place < _text.size() && _text[_place] != '<') {
      if (_text[_place] != '&') {
        text += _text[_place++];
        continue;
      }
      const std::string reference = upTo(";");
      if (_failed) return;
      const std::string entity = reference.substr(1, reference.size() - 2);
      if (appendEntity(entity, text)) continue;
      flush();
      into.push_back({XmlNode::Kind::reference, entity, "", {}, {}});
    }
    flush();
  }

  std::string attributeValue() {
    const char quote = _text[_place];
    if (quote != '"' && quote != '\'') _failed = true;
    ++_place;
    std::string value;
    while (!_failed && _place < _text.size() && _text[_place] != quote) {
      if (_text[_place] != '&') {
        value += _text[_place++];
        continue;
      }
      const std::string reference = upTo(";");
      if (!_failed && !appendEntity(reference.substr(1, reference.size() - 2), value))
        value += reference;
    }
    ++_place;
    return value;
  }

  XmlNode element() {
    XmlNode node;
    ++_place;
    node.name = name();
    for (skipBlanks(); !_failed && _place < _text.size() && !at(">") && !at("/>"); skipBlanks()) {
      const std::string attribute = name();
      skipBlanks();
      if (!at("=")) _failed = true;
      ++_place;
      skipBlanks();
      if (_place >= _text.size()) _failed = true;
      if (!_failed) node.attributes.emplace_back(attribute, attributeValue());
    }
    if (at("/>")) {
      _place += 2;
      return node;
    }
    ++_place;
    while (!_failed && _place < _text.size() && !at("</")) addNode(node.children);
    if (!at(("</" + node.name).c_str())) _failed = true;
    upTo(">");
    return node;
  }

  const std::string& _text;
  std::size_t _place = 0;
  bool _failed = false;
};

}  // namespace

std::vector<const XmlNode*> XmlNode::elements() const {
  std::vector<const XmlNode*> found;
  for (const XmlNode& child : children)
    if (child.kind == Kind::element) found.push_back(&child);
  return found;
}

std::vector<XmlNode*> XmlNode::elements(const std::string& named) {
  std::vector<XmlNode*> found;
  for (XmlNode& child : children)
    if (child.kind == Kind::element && child.name == named) found.push_back(&child);
  return found;
}

std::string* XmlNode::attribute(const std::string& named) {
  for (auto& [key, value] : attributes)
    if (key == named) return &value;
  return nullptr;
}

std::string XmlNode::wholeText() const {
  std::string result;
  for (const XmlNode& child : children)
    if (child.kind == Kind::text || child.kind == Kind::cdata) result += child.text;
  return result;
}

std::optional<XmlDocument> XmlDocument::parse(const std::string& text) {
  return Parser(text).document();
}

const XmlNode& XmlDocument::root() const {
  return *std::find_if(top.begin(), top.end(),
                       [](const XmlNode& node) { return node.kind == XmlNode::Kind::element; });
}
XmlNode& XmlDocument::root() {
  return const_cast<XmlNode&>(static_cast<const XmlDocument&>(*this).root());
}

void dropIndentation(XmlNode& element) {
  const bool hasText =
      std::any_of(element.children.begin(), element.children.end(), [](const XmlNode& child) {
        return child.kind == XmlNode::Kind::cdata || child.kind == XmlNode::Kind::reference ||
               (child.kind == XmlNode::Kind::text && !isBlank(child.text));
      });
  const bool hasElements = !element.elements().empty();
  if (!hasText && (hasElements || element.children.size() > 1))
    std::erase_if(element.children, [](const XmlNode& child) {
      return child.kind == XmlNode::Kind::text && isBlank(child.text);
    });
  for (XmlNode& child : element.children) dropIndentation(child);
}

std::string described(const XmlNode& node, int depth) {
  static const char* kinds[] = {"element", "text", "cdata", "comment", "instruction", "reference"};
  std::string line(static_cast<std::size_t>(2 * depth), ' ');
  line += kinds[static_cast<int>(node.kind)];
  line += " " + node.name + " [" + node.text + "]";
  for (const auto& [key, value] : node.attributes) line += " " + key + "=[" + value + "]";
  line += "\n";
  for (const XmlNode& child : node.children) line += described(child, depth + 1);
  return line;
}

}  // namespace installer::test
