// What is plain is the same to the library: a manifest's elements and bytes, a list's value.

#include <vector>

#include "Fuzzed.h"
#include "base/LibraryDocument.h"
#include "base/PlainDocument.h"
#include "base/XmlElements.h"

namespace installer::fuzz {

namespace {

// Changes the attribute "url" of the root element and of those directly below it.
std::optional<std::string> changed(const xml::Document& document) {
  if (!document) return std::nullopt;
  auto elements = document->childrenNamed(document->root(), "feature");
  elements.push_back(document->root());
  document->changeAttributes(elements, "url",
                             [](std::string_view url) { return std::string(url) + "\"<\t&>"; });
  return document->serialize();
}

class Notes : public xml::ElementReceiver {
 public:
  void begin() override { _text.clear(); }
  bool open(std::string_view name) override { return add('<', name); }
  bool text(std::string_view text) override {
    _text += text;
    return true;
  }
  bool close() override { return add('>', ""); }

  const std::string& notes() const { return _text; }

 private:
  bool add(char kind, std::string_view name) {
    _text += kind;
    _text += name;
    return true;
  }

  std::string _text;
};

void tryElements(std::string_view input) {
  Notes plain;
  Notes any;
  const auto read = xml::readPlainElements(input, "<!DOCTYPE plist>", plain);
  if (!read) return;
  require(xml::readAnyElements(input, any) == *read, "the library reads what is plain");
  require(plain.notes() == any.notes(), "it is told the same");
}

}  // namespace

void tryInput(std::string_view input) {
  allowMemory(std::size_t{2} << 20, 1000);  // trees of the library, too
  tryElements(input);
  std::string bytes(input);
  const xml::Document plain = xml::PlainDocument::parse(bytes);
  if (!plain) return;
  const std::optional<std::string> saved = changed(plain);
  require(saved == changed(xml::LibraryDocument::parse(input)), "it is saved the same");
}

}  // namespace installer::fuzz
