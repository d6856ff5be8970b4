#include "base/XmlPropertyListReader.h"

#include <string>
#include <utility>

#include "base/XmlBlanks.h"
#include "base/XmlElements.h"
#include "base/XmlPropertyListElements.h"

namespace installer::PropertyList {

namespace {

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
    else if (!xml::isBlank(bytes))
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
