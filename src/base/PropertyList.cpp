#include "hotfix/base/PropertyList.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/BinaryPropertyListReader.h"
#include "base/XmlPropertyListCheck.h"
#include "base/XmlPropertyListReader.h"
#include "base/XmlPropertyListWriter.h"

namespace installer::PropertyList {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

bool isTrueText(std::string_view text) {
  std::size_t at = std::min(text.find_first_not_of(kBlanks), text.size());
  if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
  at = text.find_first_not_of('0', at);
  if (at == std::string_view::npos) return false;
  return std::string_view("YyTt123456789").find(text[at]) != std::string_view::npos;
}

bool isTrue(const std::string& text) {
  return isTrueText(text);
}
bool isTrue(bool flag) {
  return flag;
}
bool isTrue(std::int64_t number) {
  return number != 0;
}
bool isTrue(std::uint64_t number) {
  return number != 0;
}
bool isTrue(double number) {
  return number != 0;
}
template <class Other>
bool isTrue(const Other&) {
  return false;
}

}  // namespace

Value::Value(std::uint64_t number) : _storage(number) {
  if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    _storage = static_cast<std::int64_t>(number);
}

std::optional<Value> parse(std::string_view bytes) {
  return bytes.starts_with(kBinaryMagic) ? readBinary(bytes) : readXml(bytes);
}

std::optional<std::string> serialize(const Value& value) {
  std::optional<std::string> bytes = writeXml(value);
  return bytes && isToldBy(*bytes, value) ? std::move(bytes) : std::nullopt;
}

std::optional<std::string> serializeDictionary(const Dictionary& dictionary) {
  std::optional<std::string> bytes = writeXml(dictionary);
  return bytes && isToldBy(*bytes, dictionary) ? std::move(bytes) : std::nullopt;
}

std::optional<Dictionary> parseDictionary(std::string_view bytes) {
  std::optional<Value> value = parse(bytes);
  if (!value) return std::nullopt;
  return std::move(*value).take<Dictionary>();
}

std::optional<std::string> textForKey(const Dictionary& dictionary, std::string_view key) {
  const Value* value = dictionary.find(key);
  const std::string* text = value != nullptr ? value->as<std::string>() : nullptr;
  if (text == nullptr) return std::nullopt;
  return *text;
}

bool booleanForKey(const Dictionary& dictionary, std::string_view key) {
  const Value* value = dictionary.find(key);
  return value != nullptr &&
         std::visit([](const auto& held) { return isTrue(held); }, value->storage());
}

}  // namespace installer::PropertyList
