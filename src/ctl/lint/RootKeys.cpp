#include "ctl/lint/RootKeys.h"

#include "base/XmlElements.h"
#include "base/XmlPropertyListElements.h"

namespace installer::ctl::lint {

namespace {

using PropertyList::Tag;

class Counter final : public xml::ElementReceiver {
 public:
  void begin() override { *this = Counter(); }

  bool open(std::string_view name) override {
    const auto tag = PropertyList::tagNamed(name);
    if (tag == Tag::plist) return true;  // may stand around the list
    ++_depth;
    _isRootKey = _depth == 2 && tag == Tag::key;
    return true;
  }

  bool text(std::string_view text) override {
    if (_isRootKey) _key += text;
    return true;
  }

  bool close() override {
    if (_isRootKey) ++_keys[_key];
    _isRootKey = false;
    _key.clear();
    --_depth;
    return true;
  }

  RootKeys take() { return std::move(_keys); }

 private:
  int _depth = 0;  // 1 in the root
  bool _isRootKey = false;
  std::string _key;  // so far
  RootKeys _keys;
};

}  // namespace

RootKeys rootKeysOf(std::string_view list) {
  Counter counter;
  if (list.starts_with("bplist") || !xml::readElements(list, PropertyList::kUsualType, counter))
    return {};
  return counter.take();
}

}  // namespace installer::ctl::lint
