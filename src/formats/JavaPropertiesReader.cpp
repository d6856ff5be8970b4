#include "formats/JavaPropertiesReader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "base/Characters.h"

namespace installer {

namespace {

constexpr std::string_view kOptionPrefix = "-X";   // begins an option of the Java virtual machine
constexpr std::size_t kEntriesAtOnce = 64;         // that are stored together
constexpr std::string_view kContinuation = " \\";  // ends a line that the next one continues

// White space and line ends among the characters of Latin-1, next line and no-break space included.
bool isTrimmed(char character) {
  const auto number = static_cast<unsigned char>(character);
  return (number >= 0x09 && number <= 0x0D) || number == 0x20 || number == 0x85 || number == 0xA0;
}

std::span<char> trimmed(std::span<char> line) {
  const std::string_view text = trimmedLine(viewOf(line));
  return line.subspan(static_cast<std::size_t>(text.data() - line.data()), text.size());
}

bool isSeparator(char character) {
  return character == '=' || character == ':' || character == ' ' || character == '\t';
}

// Whether a backslash before the character is dropped. The character keeps its meaning all the
// same: an escaped separator separates.
bool isEscapable(char character) {
  return character == ':' || character == '\\' || character == '#' || character == ' ' ||
         character == '=' || character == '!';
}

std::string fromLatin1(std::string_view latin1) {
  std::string text;
  for (const char character : latin1) appendCharacter(static_cast<unsigned char>(character), text);
  return text;
}

// A text that is put together from parts of a line in the line's own bytes: what lies between the
// parts has been looked at and is of no more use.
class JoinedParts {
 public:
  void append(std::span<char> part) {
    if (_joined.empty()) {
      _joined = part;
      return;
    }
    char* const end = _joined.data() + _joined.size();
    if (part.data() != end) std::memmove(end, part.data(), part.size());
    _joined = {_joined.data(), _joined.size() + part.size()};
  }

  std::string_view view() const { return viewOf(_joined); }

 private:
  std::span<char> _joined;
};

// Reads line by line; what one line leaves behind for the next are its flags.
class LineReader {
 public:
  explicit LineReader(TextDictionary& entries) : _entries(entries) {}

  // A trimmed line of bytes that the dictionary keeps, and how many characters they are.
  void read(std::span<char> line, std::size_t characters);
  void storeEntries();

 private:
  std::size_t readFrom(std::span<char> line, std::size_t at);
  bool isDropped(std::span<char> line, std::size_t backslash);
  std::size_t endOfOrdinary(std::string_view line, std::size_t at) const;
  void readSeparator(std::span<char> separator);
  void readOrdinary(std::span<char> characters);

  TextDictionary& _entries;
  std::array<TextDictionary::Entry, kEntriesAtOnce> _read;
  std::size_t _readCount = 0;
  JoinedParts _key;
  JoinedParts _value;
  bool _asksForMore = false;  // the line ends as a continued one does
  // A backslash asked for a continuation and nothing was added to a value since. Lines that add
  // nothing keep it, so that a blank line behind a continuation is lost too.
  bool _continued = false;
  bool _inValue = false;
  bool _optionLine = false;
  bool _beforeSeparator = false;
};

void LineReader::read(std::span<char> line, std::size_t characters) {
  const std::string_view text = viewOf(line);
  if (text.starts_with('#')) return;
  _key = {};
  _value = {};
  _asksForMore = text.ends_with(kContinuation);
  // The blank that a continuation needs has separated a value from its key, or is in one.
  _inValue = _continued;
  // A line of one character keeps the flag of the line before it.
  if (!_continued && characters >= 2) _optionLine = text.starts_with(kOptionPrefix);
  _beforeSeparator = true;
  for (std::size_t at = 0; at < line.size();) at = readFrom(line, at);
  if (_continued) return;
  _read[_readCount++] = {_key.view(), _value.view()};
  if (_readCount == _read.size()) storeEntries();
}

void LineReader::storeEntries() {
  _entries.setKept(std::span(_read).first(_readCount));
  _readCount = 0;
}

// Takes the character there, with all behind it that are of its kind; answers where to go on.
std::size_t LineReader::readFrom(std::span<char> line, std::size_t at) {
  if (line[at] == '\\' && isDropped(line, at)) return at + 1;
  if (_beforeSeparator && isSeparator(line[at])) {
    readSeparator(line.subspan(at, 1));
    return at + 1;
  }
  const std::size_t end = endOfOrdinary(viewOf(line), at + 1);
  readOrdinary(line.subspan(at, end - at));
  return end;
}

bool LineReader::isDropped(std::span<char> line, std::size_t backslash) {
  const bool last = backslash + 1 == line.size();
  if (!last) return isEscapable(line[backslash + 1]);
  _continued = _continued || _asksForMore;
  return _asksForMore;
}

// Behind the first character of a value no other one separates.
std::size_t LineReader::endOfOrdinary(std::string_view line, std::size_t at) const {
  if (_inValue) return std::min(line.find('\\', at), line.size());
  while (at < line.size() && line[at] != '\\' && !isSeparator(line[at])) ++at;
  return at;
}

void LineReader::readSeparator(std::span<char> separator) {
  _inValue = true;
  if (_optionLine) _value.append(separator);
}

void LineReader::readOrdinary(std::span<char> characters) {
  if (!_inValue) {
    _key.append(characters);
    return;
  }
  _value.append(characters);
  _continued = false;
  _beforeSeparator = false;
}

}  // namespace

std::string_view trimmedLine(std::string_view line) {
  while (!line.empty() && isTrimmed(line.front())) line.remove_prefix(1);
  while (!line.empty() && isTrimmed(line.back())) line.remove_suffix(1);
  return line;
}

void readJavaProperties(std::string latin1, TextDictionary& entries) {
  LineReader reader(entries);
  std::span<char> rest = entries.keep(std::move(latin1));
  while (!rest.empty()) {
    const std::size_t end = std::min(viewOf(rest).find('\n'), rest.size());
    const std::span<char> line = trimmed(rest.first(end));
    reader.read(isAscii(viewOf(line)) ? line : entries.keepCopy(fromLatin1(viewOf(line))),
                line.size());
    rest = rest.subspan(std::min(end + 1, rest.size()));
  }
  reader.storeEntries();
}

}  // namespace installer
