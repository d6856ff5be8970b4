#include "formats/JavaPropertiesReader.h"

#include <cstddef>
#include <utility>

#include "base/Characters.h"

namespace installer {

namespace {

constexpr std::string_view kOptionPrefix = "-X";   // begins an option of the Java virtual machine
constexpr std::string_view kContinuation = " \\";  // ends a line that the next one continues

// White space and line ends among the characters of Latin-1, next line and no-break space included.
bool isTrimmed(char character) {
  const auto number = static_cast<unsigned char>(character);
  return (number >= 0x09 && number <= 0x0D) || number == 0x20 || number == 0x85 || number == 0xA0;
}

std::string_view trimmed(std::string_view line) {
  while (!line.empty() && isTrimmed(line.front())) line.remove_prefix(1);
  while (!line.empty() && isTrimmed(line.back())) line.remove_suffix(1);
  return line;
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

void appendLatin1(char character, std::string& to) {
  appendCharacter(static_cast<unsigned char>(character), to);
}

// Reads line by line; what one line leaves behind for the next are its flags.
class LineReader {
 public:
  explicit LineReader(OrderedDictionary<std::string>& entries) : _entries(entries) {}

  void read(std::string_view line);

 private:
  void readCharacter(std::string_view line, std::size_t at);
  void readSeparator(char character);
  void readOrdinary(char character);

  OrderedDictionary<std::string>& _entries;
  std::string _key;
  std::string _value;
  // A backslash asked for a continuation and nothing was added to a value since. Lines that add
  // nothing keep it, so that a blank line behind a continuation is lost too.
  bool _continued = false;
  bool _inValue = false;
  bool _optionLine = false;
  bool _beforeSeparator = false;
};

void LineReader::read(std::string_view line) {
  if (line.starts_with('#')) return;
  _key.clear();
  _value.clear();
  // The blank that a continuation needs has separated a value from its key, or is in one.
  _inValue = _continued;
  // A line of one character keeps the flag of the line before it.
  if (!_continued && line.size() >= 2) _optionLine = line.starts_with(kOptionPrefix);
  _beforeSeparator = true;
  for (std::size_t at = 0; at < line.size(); ++at) readCharacter(line, at);
  if (!_continued) _entries.set(std::move(_key), std::move(_value));
}

void LineReader::readCharacter(std::string_view line, std::size_t at) {
  const char character = line[at];
  if (character == '\\') {
    const bool last = at + 1 == line.size();
    if (last && line.ends_with(kContinuation)) {
      _continued = true;
      return;
    }
    if (!last && isEscapable(line[at + 1])) return;
  }
  if (_beforeSeparator && isSeparator(character)) {
    readSeparator(character);
  } else {
    readOrdinary(character);
  }
}

void LineReader::readSeparator(char character) {
  _inValue = true;
  if (_optionLine) _value += character;
}

void LineReader::readOrdinary(char character) {
  if (!_inValue) {
    appendLatin1(character, _key);
    return;
  }
  appendLatin1(character, _value);
  _continued = false;
  _beforeSeparator = false;
}

}  // namespace

void readJavaProperties(std::string_view latin1, OrderedDictionary<std::string>& entries) {
  LineReader reader(entries);
  while (!latin1.empty()) {
    const std::size_t end = latin1.find('\n');
    reader.read(trimmed(latin1.substr(0, end)));
    if (end == std::string_view::npos) break;
    latin1.remove_prefix(end + 1);
  }
}

}  // namespace installer
