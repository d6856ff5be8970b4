#include "platform/PropertyList.h"

#include <cmath>
#include <limits>

#include "platform/BinaryPropertyListReader.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/XmlPropertyListReader.h"
#include "platform/XmlPropertyListWriter.h"

namespace installer::PropertyList {

namespace {

bool sameInXml(const Value& written, const Value& read);

bool sameInXml(double written, double read) {
  return written == read || (std::isnan(written) && std::isnan(read));
}

// The parts of a second are what XML leaves out.
bool sameInXml(const Date& written, const Date& read) {
  return std::floor(written.seconds) == read.seconds;
}

bool sameInXml(const Array& written, const Array& read) {
  if (written.size() != read.size()) return false;
  for (std::size_t place = 0; place < written.size(); ++place)
    if (!sameInXml(written[place], read[place])) return false;
  return true;
}

bool sameInXml(const Dictionary& written, const Dictionary& read) {
  if (written.size() != read.size()) return false;
  auto other = read.begin();
  for (const auto& [key, value] : written) {
    if (key != other->first || !sameInXml(value, other->second)) return false;
    ++other;
  }
  return true;
}

template <class Plain>
bool sameInXml(const Plain& written, const Plain& read) {
  return written == read;
}

// A dictionary that looks like the XML form of an object reference is read as one.
bool isFormOf(const Dictionary& written, const Uid& read) {
  const Value* number = written.find("CF$UID");
  return written.size() == 1 && number != nullptr && *number == Value(read.number);
}

// Whether both are told by the same XML.
bool sameInXml(const Value& written, const Value& read) {
  const auto* dictionary = written.as<Dictionary>();
  const auto* uid = read.as<Uid>();
  if (dictionary != nullptr && uid != nullptr) return isFormOf(*dictionary, *uid);
  return std::visit(
      [&](const auto& held) {
        const auto* other = read.as<std::decay_t<decltype(held)>>();
        return other != nullptr && sameInXml(held, *other);
      },
      written.storage());
}

bool isTrueText(std::string_view text) {
  std::size_t at = std::min(text.find_first_not_of(" \t"), text.size());
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
  if (!bytes) return std::nullopt;
  const std::optional<Value> read = readXml(*bytes);
  if (!read || !sameInXml(value, *read)) return std::nullopt;
  return bytes;
}

std::optional<Dictionary> parseDictionary(std::string_view bytes) {
  const std::optional<Value> value = parse(bytes);
  const Dictionary* dictionary = value ? value->as<Dictionary>() : nullptr;
  if (dictionary == nullptr) return std::nullopt;
  return *dictionary;
}

std::optional<Dictionary> readDictionary(const std::string& path) {
  const std::optional<std::string> bytes = Platform::current().files->read(path);
  if (!bytes) return std::nullopt;
  return parseDictionary(*bytes);
}

bool writeDictionary(const Dictionary& dictionary, const std::string& path) {
  const std::optional<std::string> bytes = serialize(Value(dictionary));
  return bytes && Platform::current().files->write(path, *bytes);
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
