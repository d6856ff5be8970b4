#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hotfix/base/PropertyList.h"

namespace installer::test {

// A property-list value as the tests see it, independent of the program's own codec: the kind is
// the XML element's name, text its content, and folders of values their items in order.
struct ListValue {
  std::string
      kind;  // "string", "integer", "true", "false", "real", "date", "data", "array", "dict"
  std::string text;
  std::vector<std::pair<std::string, ListValue>> items;  // keys are empty in an array

  static ListValue string(std::string text) { return {"string", std::move(text), {}}; }
  static ListValue integer(std::int64_t number) { return {"integer", std::to_string(number), {}}; }
  static ListValue boolean(bool flag) { return {flag ? "true" : "false", "", {}}; }
  static ListValue other(std::string kind, std::string text) {
    return {std::move(kind), std::move(text), {}};
  }
  static ListValue array(std::vector<ListValue> values);
  static ListValue dictionary(std::vector<std::pair<std::string, ListValue>> entries);

  // nullptr when there is no such key.
  const ListValue* find(const std::string& key) const;
  // The text of a string under the key; nullopt for anything else.
  std::optional<std::string> stringAt(const std::string& key) const;
  std::vector<std::string> keys() const;

  friend bool operator==(const ListValue&, const ListValue&) = default;
};
void PrintTo(const ListValue& value, std::ostream* stream);

// The XML form, with the usual declaration and DOCTYPE.
std::string xmlList(const ListValue& value);
// The binary form, for what propertyListOf() takes.
std::string binaryList(const ListValue& value);

// The value in the program's own type; a date or data fails the test.
PropertyList::Value propertyListOf(const ListValue& list);

// Reads the XML form; nullopt when the text is not one.
std::optional<ListValue> readXmlList(const std::string& text);

std::string escapedForXml(const std::string& text);

}  // namespace installer::test
