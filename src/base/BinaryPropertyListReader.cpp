#include "base/BinaryPropertyListReader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "base/Characters.h"
#include "base/PropertyListDate.h"

namespace installer::PropertyList {

namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kMaximumContent = std::size_t{64} << 20;  // bytes of text and data

// What sharing may add, so that memory grows with the file: without shared arrays and dictionaries
// each visit has a byte of its own in the file.
constexpr std::size_t kSharedObjects = 10'000;
constexpr std::size_t kSharedContent = std::size_t{1} << 20;  // bytes
constexpr std::size_t kContentForEachByte = 8;

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = (number << 8) | static_cast<unsigned char>(byte);
  return number;
}

std::string textFromUtf16(std::string_view bytes) {
  std::u16string units;
  for (std::size_t at = 0; at < bytes.size(); at += 2)
    units += static_cast<char16_t>(bigEndian(bytes.substr(at, 2)));
  return asXmlCharacters(fromUnits(units));
}

// The fixed block at the end of the file.
struct Trailer {
  std::size_t offsetSize;     // bytes of an entry in the offset table
  std::size_t referenceSize;  // bytes of a reference to an object
  std::uint64_t objects;      // entries in the offset table
  std::uint64_t root;         // number of the outermost object
  std::uint64_t table;        // where the offset table begins; the objects end here
};

bool isSize(std::size_t size) {
  return size >= 1 && size <= sizeof(std::uint64_t);
}

std::optional<Trailer> readTrailer(std::string_view bytes) {
  if (bytes.size() < kHeaderSize + kTrailerSize) return std::nullopt;
  const std::size_t end = bytes.size() - kTrailerSize;
  const std::string_view fields = bytes.substr(end);
  const Trailer trailer{bigEndian(fields.substr(6, 1)), bigEndian(fields.substr(7, 1)),
                        bigEndian(fields.substr(8, 8)), bigEndian(fields.substr(16, 8)),
                        bigEndian(fields.substr(24))};
  if (!isSize(trailer.offsetSize) || !isSize(trailer.referenceSize)) return std::nullopt;
  if (trailer.table < kHeaderSize || trailer.table > end) return std::nullopt;
  if (trailer.objects > (end - trailer.table) / trailer.offsetSize) return std::nullopt;
  if (trailer.root >= trailer.objects) return std::nullopt;
  return trailer;
}

class Reader {
 public:
  Reader(std::string_view bytes, const Trailer& trailer)
      : _bytes(bytes),
        _trailer(trailer),
        _visitsLeft(std::min(kMaximumObjects, bytes.size() + kSharedObjects)),
        _contentLeft(
            std::min(kMaximumContent, bytes.size() * kContentForEachByte + kSharedContent)) {}

  std::optional<Value> read() {
    if (!visit(1)) return std::nullopt;
    return object(_trailer.root);
  }

 private:
  // What an object's first byte says: its kind, and how much of what follows belongs to it.
  struct Head {
    unsigned kind;        // the upper half of the byte
    std::uint64_t count;  // the lower half, or the length that follows it
    std::uint64_t body;   // where the content begins
  };

  // Counts visits before they are made, so that nothing is built beyond the bound.
  bool visit(std::uint64_t count) {
    if (count > _visitsLeft) return false;
    _visitsLeft -= count;
    return true;
  }

  // Bytes of the object area; nullopt beyond it.
  std::optional<std::string_view> slice(std::uint64_t at, std::uint64_t size) const {
    if (at > _trailer.table || size > _trailer.table - at) return std::nullopt;
    return _bytes.substr(at, size);
  }

  std::optional<std::uint64_t> offsetOf(std::uint64_t number) const {
    if (number >= _trailer.objects) return std::nullopt;
    const std::uint64_t entry = _trailer.table + number * _trailer.offsetSize;
    const std::uint64_t offset = bigEndian(_bytes.substr(entry, _trailer.offsetSize));
    if (offset < kHeaderSize || offset >= _trailer.table) return std::nullopt;
    return offset;
  }

  std::optional<Head> headOf(std::uint64_t number) const {
    const std::optional<std::uint64_t> offset = offsetOf(number);
    if (!offset) return std::nullopt;
    const unsigned marker = static_cast<unsigned char>(_bytes[*offset]);
    const Head head{marker >> 4, marker & 0x0F, *offset + 1};
    return isCounted(head.kind) && head.count == 0x0F ? withLongCount(head) : head;
  }

  static bool isCounted(unsigned kind) {
    return kind == 0x4 || kind == 0x5 || kind == 0x6 || kind == 0xA || kind == 0xD;
  }

  // A length of 15 or more is an integer object of its own behind the first byte.
  std::optional<Head> withLongCount(const Head& head) const {
    const std::optional<std::string_view> marker = slice(head.body, 1);
    if (!marker) return std::nullopt;
    const auto bits = static_cast<unsigned char>(marker->front());
    if ((bits >> 4) != 0x1 || (bits & 0x0F) > 3) return std::nullopt;
    const std::uint64_t size = std::uint64_t{1} << (bits & 0x0F);
    const std::optional<std::string_view> count = slice(head.body + 1, size);
    if (!count) return std::nullopt;
    return Head{head.kind, bigEndian(*count), head.body + 1 + size};
  }

  std::optional<Value> object(std::uint64_t number) {
    const std::optional<Head> head = headOf(number);
    if (!head) return std::nullopt;
    switch (head->kind) {
      case 0x0:
        return flag(*head);
      case 0x1:
        return integer(*head);
      case 0x2:
        return real(*head);
      case 0x3:
        return date(*head);
      case 0x4:
        return data(*head);
      case 0x5:
      case 0x6:
        return text(*head);
      case 0x8:
        return uid(*head);
      case 0xA:
      case 0xD:
        return container(*head);
      default:
        return std::nullopt;
    }
  }

  static std::optional<Value> flag(const Head& head) {
    if (head.count != 0x8 && head.count != 0x9) return std::nullopt;
    return Value(head.count == 0x9);
  }

  // One, two and four bytes are unsigned, eight are signed; sixteen are there for unsigned numbers
  // beyond the signed range.
  std::optional<Value> integer(const Head& head) const {
    if (head.count > 4) return std::nullopt;
    const std::uint64_t size = std::uint64_t{1} << head.count;
    const std::optional<std::string_view> bytes = slice(head.body, size);
    if (!bytes) return std::nullopt;
    if (size == 16) return wideInteger(*bytes);
    const std::uint64_t number = bigEndian(*bytes);
    return size == 8 ? Value(static_cast<std::int64_t>(number)) : Value(number);
  }

  static std::optional<Value> wideInteger(std::string_view bytes) {
    const std::uint64_t high = bigEndian(bytes.substr(0, 8));
    const std::uint64_t low = bigEndian(bytes.substr(8));
    if (high == 0) return Value(low);
    const auto number = static_cast<std::int64_t>(low);
    if (high != std::numeric_limits<std::uint64_t>::max() || number >= 0) return std::nullopt;
    return Value(number);
  }

  std::optional<double> doubleAt(std::uint64_t at) const {
    const std::optional<std::string_view> bytes = slice(at, sizeof(double));
    if (!bytes) return std::nullopt;
    return std::bit_cast<double>(bigEndian(*bytes));
  }

  std::optional<double> floatAt(std::uint64_t at) const {
    const std::optional<std::string_view> bytes = slice(at, sizeof(float));
    if (!bytes) return std::nullopt;
    return std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(*bytes)));
  }

  std::optional<Value> real(const Head& head) const {
    std::optional<double> number;
    if (head.count == 2) number = floatAt(head.body);
    if (head.count == 3) number = doubleAt(head.body);
    if (!number) return std::nullopt;
    return Value(*number);
  }

  std::optional<Value> date(const Head& head) const {
    const std::optional<double> seconds = head.count == 3 ? doubleAt(head.body) : std::nullopt;
    if (!seconds) return std::nullopt;
    return Value(tellableDate({*seconds}));
  }

  // The bytes of a text or of data, counted against the bound.
  std::optional<std::string_view> content(std::uint64_t at, std::uint64_t size) {
    const std::optional<std::string_view> bytes = slice(at, size);
    if (!bytes || size > _contentLeft) return std::nullopt;
    _contentLeft -= size;
    return bytes;
  }

  std::optional<Value> data(const Head& head) {
    const std::optional<std::string_view> bytes = content(head.body, head.count);
    if (!bytes) return std::nullopt;
    return Value(Data{std::string(*bytes)});
  }

  std::optional<std::string> string(const Head& head) {
    if (head.count > kMaximumContent) return std::nullopt;
    if (head.kind == 0x6) {
      const std::optional<std::string_view> units = content(head.body, head.count * 2);
      if (!units) return std::nullopt;
      return textFromUtf16(*units);
    }
    const std::optional<std::string_view> bytes = content(head.body, head.count);
    if (!bytes || !isAscii(*bytes)) return std::nullopt;
    return asXmlCharacters(*bytes);
  }

  std::optional<Value> text(const Head& head) {
    std::optional<std::string> characters = string(head);
    if (!characters) return std::nullopt;
    return Value(*std::move(characters));
  }

  std::optional<Value> uid(const Head& head) const {
    const std::optional<std::string_view> bytes = slice(head.body, head.count + 1);
    if (!bytes) return std::nullopt;
    const std::size_t excess = bytes->size() > 8 ? bytes->size() - 8 : 0;
    if (bytes->substr(0, excess).find_first_not_of('\0') != std::string_view::npos)
      return std::nullopt;
    return Value(Uid{bigEndian(bytes->substr(excess))});
  }

  std::optional<Value> container(const Head& head) {
    if (_depth >= kMaximumDepth) return std::nullopt;
    ++_depth;
    std::optional<Value> value = head.kind == 0xA ? array(head) : dictionary(head);
    --_depth;
    return value;
  }

  // The references of a container, read one at a time.
  std::optional<std::string_view> references(std::uint64_t at, std::uint64_t count) {
    if (!visit(count)) return std::nullopt;
    return slice(at, count * _trailer.referenceSize);
  }

  std::uint64_t reference(std::string_view references, std::uint64_t place) const {
    return bigEndian(references.substr(place * _trailer.referenceSize, _trailer.referenceSize));
  }

  std::optional<Value> array(const Head& head) {
    const std::optional<std::string_view> items = references(head.body, head.count);
    if (!items) return std::nullopt;
    Array array;
    array.reserve(head.count);
    for (std::uint64_t place = 0; place < head.count; ++place) {
      std::optional<Value> value = object(reference(*items, place));
      if (!value) return std::nullopt;
      array.push_back(*std::move(value));
    }
    return Value(std::move(array));
  }

  std::optional<std::string> key(std::uint64_t number) {
    const std::optional<Head> head = headOf(number);
    if (!head || (head->kind != 0x5 && head->kind != 0x6)) return std::nullopt;
    return string(*head);
  }

  std::optional<Value> dictionary(const Head& head) {
    const std::optional<std::string_view> keys = references(head.body, head.count);
    if (!keys) return std::nullopt;
    const std::optional<std::string_view> values = references(head.body + keys->size(), head.count);
    if (!values) return std::nullopt;
    Dictionary dictionary;
    dictionary.reserve(head.count);
    for (std::uint64_t place = 0; place < head.count; ++place) {
      std::optional<std::string> name = key(reference(*keys, place));
      if (!name) return std::nullopt;
      std::optional<Value> value = object(reference(*values, place));
      if (!value) return std::nullopt;
      dictionary.set(*std::move(name), *std::move(value));
    }
    return Value(std::move(dictionary));
  }

  std::string_view _bytes;
  Trailer _trailer;
  int _depth = 0;              // open containers
  std::size_t _visitsLeft;     // of objects, of each as often as it is referred to
  std::uint64_t _contentLeft;  // bytes of text and data that may still be taken over
};

}  // namespace

std::optional<Value> readBinary(std::string_view bytes) {
  const std::optional<Trailer> trailer =
      bytes.starts_with(kBinaryMagic) ? readTrailer(bytes) : std::nullopt;
  if (!trailer) return std::nullopt;
  return Reader(bytes, *trailer).read();
}

}  // namespace installer::PropertyList
