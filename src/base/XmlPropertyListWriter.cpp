#include "base/XmlPropertyListWriter.h"

#include <fmt/format.h>

#include "base/Base64.h"
#include "base/PropertyListDate.h"
#include "base/RealText.h"
#include "base/XmlEscapes.h"
#include "base/XmlPropertyListElements.h"

namespace installer::PropertyList {

namespace {

constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr std::string_view kOpening = "\n<plist version=\"1.0\">\n";
constexpr std::string_view kFoot = "</plist>\n";

class Writer {
 public:
  bool write(const Value& value) {
    return std::visit([this](const auto& held) { return writeHeld(held); }, value.storage());
  }

  bool writeHeld(const Dictionary& dictionary) {
    return container("dict", dictionary.empty(), [&] {
      for (const auto& [key, value] : dictionary)
        if (!element("key", key) || !write(value)) return false;
      return true;
    });
  }

  std::string takeText() { return std::move(_text); }

 private:
  bool writeHeld(const std::string& text) { return element("string", text); }
  bool writeHeld(bool flag) { return line(flag ? "<true/>" : "<false/>"); }
  bool writeHeld(std::int64_t number) { return element("integer", std::to_string(number)); }
  bool writeHeld(std::uint64_t number) { return element("integer", std::to_string(number)); }
  bool writeHeld(double number) { return element("real", textFromReal(number)); }
  bool writeHeld(const Data& data) { return element("data", encodeBase64(data.bytes)); }

  bool writeHeld(const Date& date) {
    const std::optional<std::string> text = textFromDate(date);
    return text && element("date", *text);
  }

  bool writeHeld(const Uid& uid) {
    return container("dict", false, [&] {
      return element("key", "CF$UID") && element("integer", std::to_string(uid.number));
    });
  }

  bool writeHeld(const Array& array) {
    return container("array", array.empty(), [&] {
      for (const Value& value : array)
        if (!write(value)) return false;
      return true;
    });
  }

  template <class Content>
  bool container(std::string_view tag, bool empty, Content content) {
    if (_depth >= kMaximumDepth) return false;
    if (empty) return line(fmt::format("<{}/>", tag));
    line(fmt::format("<{}>", tag));
    ++_depth;
    const bool written = content();
    --_depth;
    return written && line(fmt::format("</{}>", tag));
  }

  bool line(std::string_view text) {
    indent();
    _text += text;
    _text += '\n';
    return true;
  }

  bool element(std::string_view tag, std::string_view text) {
    indent();
    _text += '<';
    _text += tag;
    _text += '>';
    xml::appendEscaped(text, _text);
    _text += "</";
    _text += tag;
    _text += ">\n";
    return true;
  }

  void indent() { _text.append(static_cast<std::size_t>(_depth), '\t'); }

  std::string _text = std::string(kHead).append(kUsualType).append(kOpening);
  int _depth = 0;  // open containers
};

}  // namespace

std::optional<std::string> writeXml(const Value& value) {
  Writer writer;
  if (!writer.write(value)) return std::nullopt;
  return writer.takeText().append(kFoot);
}

std::optional<std::string> writeXml(const Dictionary& dictionary) {
  Writer writer;
  if (!writer.writeHeld(dictionary)) return std::nullopt;
  return writer.takeText().append(kFoot);
}

}  // namespace installer::PropertyList
