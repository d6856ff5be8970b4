#include "base/XmlPropertyListReader.h"

#include <array>
#include <charconv>
#include <limits>
#include <string>
#include <utility>

#include "base/Base64.h"
#include "base/PropertyListDate.h"
#include "base/RealText.h"
#include "base/XmlElements.h"

namespace installer::PropertyList {

namespace {

constexpr std::string_view kUidKey = "CF$UID";
constexpr std::string_view kBlanks = " \t\r\n";
// As we and the platform write it.
constexpr std::string_view kUsualType =
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">";

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

// The platform writes "+infinity".
std::optional<Value> realValueFromText(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  const std::optional<double> number = realFromText(text);
  if (!number) return std::nullopt;
  return Value(*number);
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
      return realValueFromText(trimmed(text));
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

// Puts the pieces of a document together. After the first one that does not belong to a property
// list nothing more is looked at.
class Builder final : public xml::ElementReceiver {
 public:
  void begin() override { *this = Builder(); }

  bool open(std::string_view name) override {
    openElement(name);
    return _good;
  }

  bool text(std::string_view bytes) override {
    if (_leaf)
      _text += bytes;
    else if (!isBlank(bytes))
      fail();
    return _good;
  }

  bool close() override {
    if (_leaf)
      closeLeaf();
    else if (!_open.empty())
      closeContainer();  // otherwise the "plist" element ends
    return _good;
  }

  std::optional<Value> take() { return std::move(_root); }

 private:
  struct Container {
    Tag tag;
    Array array;
    Dictionary dictionary;
    std::optional<std::string> key;  // the one whose value comes next
  };

  void fail() { _good = false; }

  void openElement(std::string_view name) {
    const std::optional<Tag> tag = tagNamed(name);
    if (!tag || _leaf || !fits(*tag)) return fail();
    _anyElement = true;
    if (*tag == Tag::plist) return;
    if (++_objects > kMaximumObjects) return fail();
    if (*tag == Tag::dict || *tag == Tag::array) return openContainer(*tag);
    _leaf = tag;
    _text.clear();
  }

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

  bool _good = true;  // false from the first thing that is no property list on
  bool _anyElement = false;
  std::size_t _objects = 0;  // keys and values so far
  std::vector<Container> _open;
  std::optional<Tag> _leaf;  // the open element that holds text
  std::string _text;         // of that element, so far
  std::optional<Value> _root;
};

}  // namespace

std::optional<Value> readXml(std::string_view bytes) {
  Builder builder;
  if (!xml::readElements(bytes, kUsualType, builder)) return std::nullopt;
  return builder.take();
}

}  // namespace installer::PropertyList
