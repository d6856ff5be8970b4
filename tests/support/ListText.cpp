#include "support/ListText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>

#include "support/BinaryListWriter.h"
#include "support/XmlList.h"
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
  std::string element;
  appendXml(value, element);
  element.pop_back();  // its line feed
  return xmlList(element);
}

std::string binaryList(const ListValue& value) {
  return BinaryListWriter(4, 2).bytes(propertyListOf(value));
}

PropertyList::Value propertyListOf(const ListValue& list) {
  if (list.kind == "true" || list.kind == "false") return list.kind == "true";
  if (list.kind == "integer") return std::int64_t{std::stoll(list.text)};
  if (list.kind == "real") return std::strtod(list.text.c_str(), nullptr);
  if (list.kind == "string") return list.text;
  if (list.kind == "array") {
    PropertyList::Array array;
    for (const auto& [key, value] : list.items) array.push_back(propertyListOf(value));
    return array;
  }
  EXPECT_EQ("dict", list.kind) << "no value of this kind was expected";
  PropertyList::Dictionary dictionary;
  for (const auto& [key, value] : list.items) dictionary.set(key, propertyListOf(value));
  return dictionary;
}

std::optional<ListValue> readXmlList(const std::string& text) {
  const auto document = XmlDocument::parse(text);
  if (!document || document->root().name != "plist") return std::nullopt;
  const auto values = document->root().elements();
  if (values.size() != 1) return std::nullopt;
  return valueOf(*values[0]);
}

}  // namespace installer::test
