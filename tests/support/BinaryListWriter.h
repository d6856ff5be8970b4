#pragma once

#include <bit>
#include <string>
#include <vector>

#include "hotfix/base/PropertyList.h"
#include "support/BinaryList.h"

namespace installer::test {

// Writes values as binary property lists, straight from the format's table and without a care for
// size: every object is written anew, texts beyond ASCII as 16-bit units.
class BinaryListWriter {
 public:
  // Bytes of a number in the offset table and of a reference.
  BinaryListWriter(std::size_t offsetSize, std::size_t referenceSize)
      : _list{{}, offsetSize, referenceSize} {}

  std::string bytes(const PropertyList::Value& value) {
    _list.root = add(value);
    return _list.bytes();
  }

 private:
  std::uint64_t add(const PropertyList::Value& value) {
    const std::string bytes =
        std::visit([this](const auto& held) { return this->encode(held); }, value.storage());
    _list.objects.push_back(bytes);
    return _list.objects.size() - 1;
  }

  static std::string counted(unsigned kind, std::size_t count, std::string_view body) {
    if (count < 15) return object((kind << 4U) | static_cast<unsigned>(count), body);
    return object((kind << 4U) | 0xFU, "\x12" + bigEndian(count, 4)).append(body);
  }

  static std::string encode(bool flag) { return object(flag ? 0x09 : 0x08); }
  static std::string encode(std::int64_t number) {
    return object(0x13, bigEndian(static_cast<std::uint64_t>(number), 8));
  }
  static std::string encode(std::uint64_t number) {
    return object(0x14, bigEndian(0, 8) + bigEndian(number, 8));
  }
  static std::string encode(double number) {
    return object(0x23, bigEndian(std::bit_cast<std::uint64_t>(number), 8));
  }
  static std::string encode(const PropertyList::Date& date) {
    return object(0x33, bigEndian(std::bit_cast<std::uint64_t>(date.seconds), 8));
  }
  static std::string encode(const PropertyList::Uid& uid) {
    return object(0x87, bigEndian(uid.number, 8));
  }
  static std::string encode(const PropertyList::Data& data) {
    return counted(0x4, data.bytes.size(), data.bytes);
  }

  static std::string encode(const std::string& text) {
    bool ascii = true;
    for (const char byte : text) ascii = ascii && static_cast<unsigned char>(byte) < 0x80;
    if (ascii) return counted(0x5, text.size(), text);
    const std::string units = utf16(text);
    return counted(0x6, units.size() / 2, units);
  }

  // Well-formed UTF-8 only.
  static std::string utf16(std::string_view text) {
    std::string units;
    for (std::size_t at = 0; at < text.size();) {
      const auto lead = static_cast<unsigned char>(text[at]);
      const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
      std::uint64_t character = length == 1 ? lead : lead & (0x7FU >> length);
      for (std::size_t tail = 1; tail < length; ++tail)
        character = character * 64 + (static_cast<unsigned char>(text[at + tail]) & 0x3FU);
      at += length;
      if (character < 0x10000) {
        units += bigEndian(character, 2);
        continue;
      }
      units += bigEndian(0xD800 + (character - 0x10000) / 0x400, 2);
      units += bigEndian(0xDC00 + (character - 0x10000) % 0x400, 2);
    }
    return units;
  }

  std::string reference(std::uint64_t number) { return bigEndian(number, _list.referenceSize); }

  std::string encode(const PropertyList::Array& array) {
    std::string references;
    for (const PropertyList::Value& value : array) references += reference(add(value));
    return counted(0xA, array.size(), references);
  }

  std::string encode(const PropertyList::Dictionary& dictionary) {
    std::string keys;
    std::string values;
    for (const auto& [key, value] : dictionary) {
      keys += reference(add(PropertyList::Value(key)));
      values += reference(add(value));
    }
    return counted(0xD, dictionary.size(), keys + values);
  }

  BinaryList _list;
};

}  // namespace installer::test
