#include "base/XmlPropertyListCheck.h"

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "base/XmlBlanks.h"
#include "base/XmlElements.h"
#include "base/XmlPropertyListElements.h"

namespace installer::PropertyList {

namespace {

bool isSame(double read, double meant) {
  return read == meant || (std::isnan(read) && std::isnan(meant));
}

bool isSame(const Value& read, const Value& meant) {
  if (const auto* date = meant.as<Date>()) return read == Value(Date{std::floor(date->seconds)});
  const auto* number = meant.as<double>();
  const auto* other = read.as<double>();
  return number != nullptr && other != nullptr ? isSame(*other, *number) : read == meant;
}

// Goes through a value as the pieces of the document come.
class Comparison final : public xml::ElementReceiver {
 public:
  explicit Comparison(const Value& root) : _root(&root) {}
  explicit Comparison(const Dictionary& root) : _rootDictionary(&root) {}

  void begin() override {
    _anyElement = false;
    _anyValue = false;
    _objects = 0;
    _leaf.reset();
    _open.clear();
  }

  bool open(std::string_view name) override {
    const std::optional<Tag> tag = tagNamed(name);
    if (!tag || _leaf) return false;
    if (!std::exchange(_anyElement, true)) return *tag == Tag::plist;
    if (++_objects > kMaximumObjects) return false;
    return *tag == Tag::key ? openKey() : openValue(*tag);
  }

  bool text(std::string_view bytes) override {
    if (!_leaf) return xml::isBlank(bytes);
    _text += bytes;
    return true;
  }

  bool close() override {
    if (_leaf) return closeLeaf();
    if (_open.empty()) return _anyValue;
    const Container closed = std::move(_open.back());
    _open.pop_back();
    return closed.isAtEnd();
  }

 private:
  struct Container {
    const Array* array = nullptr;
    const Dictionary* dictionary = nullptr;
    std::unique_ptr<const Dictionary> reference;  // the dictionary that stands for one
    std::size_t place = 0;                        // of the value that comes next
    bool anyKey = false;                          // whether that value's key was there

    bool isAtEnd() const {
      return !anyKey && place == (array != nullptr ? array->size() : dictionary->size());
    }
    const auto& entry() const { return dictionary->begin()[static_cast<std::ptrdiff_t>(place)]; }
  };

  bool openKey() {
    if (_open.empty() || _open.back().dictionary == nullptr) return false;
    Container& around = _open.back();
    if (around.isAtEnd() || around.anyKey) return false;
    around.anyKey = true;
    return openLeaf(Tag::key);
  }

  bool openValue(Tag tag) {
    if (_open.empty()) {
      if (std::exchange(_anyValue, true)) return false;
      return _root != nullptr ? openMeant(tag, *_root) : openDictionary(tag, *_rootDictionary);
    }
    Container& around = _open.back();
    if (around.array != nullptr)
      return !around.isAtEnd() && openMeant(tag, (*around.array)[around.place++]);
    if (!std::exchange(around.anyKey, false)) return false;
    const Value& meant = around.entry().second;
    ++around.place;
    return openMeant(tag, meant);
  }

  bool openMeant(Tag tag, const Value& meant) {
    if (const auto* dictionary = meant.as<Dictionary>()) return openDictionary(tag, *dictionary);
    if (const auto* uid = meant.as<Uid>()) {
      auto reference = std::make_unique<const Dictionary>(
          Dictionary{{std::string(kUidKey), Value(uid->number)}});
      if (!openDictionary(tag, *reference)) return false;
      _open.back().reference = std::move(reference);
      return true;
    }
    if (const auto* array = meant.as<Array>()) {
      _open.push_back({array, nullptr, nullptr});
      return tag == Tag::array && _open.size() <= kMaximumDepth;
    }
    _meant = &meant;
    return openLeaf(tag);
  }

  bool openDictionary(Tag tag, const Dictionary& dictionary) {
    _open.push_back({nullptr, &dictionary, nullptr});
    return tag == Tag::dict && _open.size() <= kMaximumDepth;
  }

  bool openLeaf(Tag tag) {
    _leaf = tag;
    _text.clear();
    return true;
  }

  bool closeLeaf() {
    const Tag tag = *std::exchange(_leaf, std::nullopt);
    if (tag == Tag::key) return _text == _open.back().entry().first;
    if (const auto* text = _meant->as<std::string>()) return tag == Tag::string && _text == *text;
    const std::optional<Value> read = leafFromText(tag, std::move(_text));
    return read && isSame(*read, *_meant);
  }

  const Value* _root = nullptr;                 // either this
  const Dictionary* _rootDictionary = nullptr;  // or that
  bool _anyElement = false;
  bool _anyValue = false;
  std::size_t _objects = 0;  // keys and values so far
  std::vector<Container> _open;
  std::optional<Tag> _leaf;       // the open element that holds text
  const Value* _meant = nullptr;  // by that element, unless it is a key
  std::string _text;              // of that element, so far
};

bool agrees(std::string_view bytes, Comparison comparison) {
  return xml::readElements(bytes, kUsualType, comparison);
}

}  // namespace

bool isToldBy(std::string_view bytes, const Value& value) {
  return agrees(bytes, Comparison(value));
}

bool isToldBy(std::string_view bytes, const Dictionary& dictionary) {
  return agrees(bytes, Comparison(dictionary));
}

}  // namespace installer::PropertyList
