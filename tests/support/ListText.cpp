#include "support/ListText.h"

#include <ostream>

#include "support/XmlText.h"

namespace installer::test {

ListValue ListValue::array(std::vector<ListValue> values) {
  ListValue result{"array", "", {}};
  for (ListValue& value : values) result.items.emplace_back("", std::move(value));
  return result;
}

ListValue ListValue::dictionary(std::vector<std::pair<std::string, ListValue>> entries) {
  return {"dict", "", std::move(entries)};
}

const ListValue* ListValue::find(const std::string& key) const {
  for (const auto& [name, value] : items)
    if (name == key) return &value;
  return nullptr;
}

std::optional<std::string> ListValue::stringAt(const std::string& key) const {
  const ListValue* value = find(key);
  if (value == nullptr || value->kind != "string") return std::nullopt;
  return value->text;
}

std::vector<std::string> ListValue::keys() const {
  std::vector<std::string> names;
  for (const auto& [name, value] : items) names.push_back(name);
  return names;
}

void PrintTo(const ListValue& value, std::ostream* stream) {
  *stream << xmlList(value);
}

std::string escapedForXml(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') {
      result += "&amp;";
    } else if (c == '<') {
      result += "&lt;";
    } else if (c == '>') {
      result += "&gt;";
    } else if (c == '"') {
      result += "&quot;";
    } else {
      result += c;
    }
  }
  return result;
}

namespace {

void appendXml(const ListValue& value, std::string& into) {
  if (value.kind == "true" || value.kind == "false") {
    into += "<" + value.kind + "/>\n";
    return;
  }
  into += "<" + value.kind + ">";
  if (value.kind == "dict" || value.kind == "array") into += "\n";
  into += escapedForXml(value.text);
  for (const auto& [key, item] : value.items) {
    if (value.kind == "dict") into += "<key>" + escapedForXml(key) + "</key>\n";
    appendXml(item, into);
  }
  into += "</" + value.kind + ">\n";
}

// --- Binary --------------------------------------------------------------------------------------

class BinaryWriter {
 public:
  std::string write(const ListValue& root) {
    add(root);
    std::string bytes = "bplist00";
    std::vector<std::size_t> offsets;
    for (const std::string& object : _objects) {
      offsets.push_back(bytes.size());
      bytes += object;
    }
    const std::size_t table = bytes.size();
    for (const std::size_t offset : offsets) bytes += number(offset, 4);
    bytes += std::string(6, '\0') + '\x04' + '\x02';
    bytes += number(_objects.size(), 8) + number(0, 8) + number(table, 8);
    return bytes;
  }

 private:
  static std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
      bytes += static_cast<char>((value >> shift) & 0xFF);
    return bytes;
  }

  static std::string head(unsigned kind, std::size_t count) {
    if (count < 15) return std::string(1, static_cast<char>((kind << 4) | count));
    return std::string(1, static_cast<char>((kind << 4) | 15)) + '\x12' + number(count, 4);
  }

  static bool isAscii(const std::string& text) {
    for (const char c : text)
      if (static_cast<unsigned char>(c) > 0x7F) return false;
    return true;
  }

  // Characters beyond 16 bits are not needed here.
  static std::string wide(const std::string& text) {
    std::string bytes;
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++count) {
      const auto first = static_cast<unsigned char>(text[i]);
      const int length = first < 0x80 ? 1 : first < 0xE0 ? 2 : 3;
      unsigned unit = length == 1 ? first : length == 2 ? first & 0x1Fu : first & 0x0Fu;
      for (int k = 1; k < length; ++k)
        unit = (unit << 6) |
               (static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]) & 0x3Fu);
      bytes += number(unit, 2);
      i += static_cast<std::size_t>(length);
    }
    return head(6, count) + bytes;
  }

  std::size_t add(const ListValue& value) {
    const std::size_t place = _objects.size();
    _objects.emplace_back();
    _objects[place] = encode(value);
    return place;
  }

  std::string encode(const ListValue& value) {
    if (value.kind == "true") return "\x09";
    if (value.kind == "false") return "\x08";
    if (value.kind == "integer")
      return '\x13' + number(static_cast<std::uint64_t>(std::stoll(value.text)), 8);
    if (value.kind == "string")
      return isAscii(value.text) ? head(5, value.text.size()) + value.text : wide(value.text);
    std::string keys, values;
    for (const auto& [key, item] : value.items)
      if (value.kind == "dict") keys += number(add(ListValue::string(key)), 2);
    for (const auto& [key, item] : value.items) values += number(add(item), 2);
    return head(value.kind == "dict" ? 13 : 10, value.items.size()) + keys + values;
  }

  std::vector<std::string> _objects;
};

// --- Reading -------------------------------------------------------------------------------------

std::optional<ListValue> valueOf(const XmlNode& element);

bool addEntries(const std::vector<const XmlNode*>& children, ListValue& result) {
  for (std::size_t i = 0; i + 1 < children.size(); i += 2) {
    const auto value = valueOf(*children[i + 1]);
    if (children[i]->name != "key" || !value) return false;
    result.items.emplace_back(children[i]->wholeText(), *value);
  }
  return children.size() % 2 == 0;
}

std::optional<ListValue> valueOf(const XmlNode& element) {
  ListValue result{element.name, "", {}};
  const auto children = element.elements();
  if (element.name == "dict") {
    if (!addEntries(children, result)) return std::nullopt;
  } else if (element.name == "array") {
    for (const XmlNode* child : children) {
      const auto value = valueOf(*child);
      if (!value) return std::nullopt;
      result.items.emplace_back("", *value);
    }
  } else {
    result.text = element.wholeText();
  }
  return result;
}

}  // namespace

std::string xmlList(const ListValue& value) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\">\n";
  appendXml(value, text);
  return text + "</plist>\n";
}

std::string binaryList(const ListValue& value) {
  return BinaryWriter().write(value);
}

std::optional<ListValue> readXmlList(const std::string& text) {
  const auto document = XmlDocument::parse(text);
  if (!document || document->root().name != "plist") return std::nullopt;
  const auto values = document->root().elements();
  if (values.size() != 1) return std::nullopt;
  return valueOf(*values[0]);
}

}  // namespace installer::test
