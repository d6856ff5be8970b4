#include "base/PlainReader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "base/Characters.h"
#include "base/LetterCase.h"
#include "base/MarkupScan.h"

namespace installer::xml {

namespace {

// Each is well within what the library accepts. Its own bounds are told in bytes or levels that are
// counted elsewhere, so that nearly the same will not do.
constexpr std::size_t kMaximumBytes = std::size_t{1} << 30;
constexpr std::size_t kMaximumPiece = std::size_t{8} << 20;       // of text, say
constexpr std::size_t kMaximumVocabulary = std::size_t{4} << 20;  // bytes
constexpr std::size_t kMaximumName = 256;
constexpr std::size_t kMaximumDepth = 200;
constexpr std::size_t kMaximumAttributesOfOne = 32;

constexpr bool isLetter(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}
constexpr bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}
constexpr bool isBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\n';
}
constexpr bool beginsName(char byte) {
  return isLetter(byte) || byte == '_';
}
constexpr bool belongsToName(char byte) {
  return isLetter(byte) || isDigit(byte) || byte == '_' || byte == '-' || byte == '.';
}

constexpr auto kBelongsToName = [] {
  std::array<bool, 256> table{};
  for (std::size_t byte = 0; byte != table.size(); ++byte)
    table[byte] = belongsToName(static_cast<char>(byte));
  return table;
}();

constexpr std::size_t kBlock = 64;  // bytes

// Whether a whole block is characters of ASCII that a document may hold. All of them are looked at
// in one go: nothing in the loop depends on what was found.
bool isAscii(const char* block) {
  unsigned char others = 0;
  for (std::size_t at = 0; at < kBlock; ++at) {
    const auto byte = static_cast<unsigned char>(block[at]);
    const bool other = (byte >= 0x80) | ((byte < 0x20) & (byte != '\t') & (byte != '\n'));
    others |= static_cast<unsigned char>(other);
  }
  return others == 0;
}

// Whether it is all UTF-8, and nothing in it that no document may hold. Carriage returns are line
// ends of other systems.
bool holdsPlainCharacters(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(at + kBlock, bytes.size());
    if (end - at == kBlock && isAscii(bytes.data() + at)) at = end;
    while (at < end) {
      const std::optional<DecodedCharacter> decoded = decodeUtf8(bytes, at);
      if (!decoded || !isXmlCharacter(decoded->character) || decoded->character == '\r')
        return false;
      at += decoded->length;
    }
  }
  return true;
}

struct Reference {
  char32_t character = 0;
  std::size_t length = 0;  // bytes from the ampersand to the semicolon
};

// nullopt for the number of no character. No reference is long enough for one that does not fit.
std::optional<Reference> numbered(std::string_view digits, int base, std::size_t length) {
  std::uint32_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, number, base);
  if (read.ptr != end || !isXmlCharacter(number)) return std::nullopt;
  return Reference{number, length};
}

// The reference whose ampersand is at `at`; nullopt for one that XML itself does not define.
std::optional<Reference> referenceAt(std::string_view text, std::size_t at) {
  constexpr std::size_t kLongest = 12;  // bytes
  const std::size_t end = text.substr(at, kLongest).find(';');
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view name = text.substr(at + 1, end - 1);
  if (name.starts_with("#x")) return numbered(name.substr(2), 16, end + 1);
  if (name.starts_with("#")) return numbered(name.substr(1), 10, end + 1);
  constexpr std::array<std::pair<std::string_view, char>, 5> kNames{
      {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
  for (const auto& [known, character] : kNames)
    if (known == name) return Reference{static_cast<unsigned char>(character), end + 1};
  return std::nullopt;
}

bool areReferencesPlain(std::string_view text) {
  for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at)
    if (!referenceAt(text, at)) return false;
  return true;
}

bool holds(std::string_view text, char byte) {
  return text.find(byte) != std::string_view::npos;
}

// Such a text counts as a word: documents are full of the same few.
bool isShortAndBlank(std::string_view text) {
  constexpr std::size_t kShort = 60;
  return text.size() < kShort && std::all_of(text.begin(), text.end(), isBlank);
}

}  // namespace

bool PlainVocabulary::add(std::string_view word) {
  const std::size_t first = static_cast<unsigned char>(word.front());
  const std::size_t last = static_cast<unsigned char>(word.back());
  const std::size_t place = (word.size() * 31 + first * 7 + last) % _recent.size();
  if (_recent[place] == word) return true;
  _recent[place] = word;
  _size += word.size();
  return _size <= kMaximumVocabulary;
}

PlainReader::PlainReader(std::string_view bytes) : _bytes(bytes) {
  _isUsable = bytes.size() <= kMaximumBytes && holdsPlainCharacters(bytes) && readDeclaration();
}

PlainReader::Piece PlainReader::next() {
  if (!_isUsable) return Piece::unusual;
  if (_isEndDue) {
    _isEndDue = false;
    _open.pop_back();
    return Piece::end;
  }
  if (_open.empty()) _at = behindBlanks(_at);
  if (_at == _bytes.size()) return _hasRoot && _open.empty() ? Piece::finish : Piece::unusual;
  if (_bytes[_at] == '<') return readMarkup();
  return _open.empty() ? Piece::unusual : readText();
}

PlainReader::Piece PlainReader::readMarkup() {
  switch (byteAt(_at + 1)) {
    case '/':
      return readEnd();
    case '?':
      return readInstruction();
    case '!':
      if (byteAt(_at + 2) == '-') return readComment();
      return byteAt(_at + 2) == '[' ? readSection() : readDocumentType();
    default:
      return readStart();
  }
}

bool PlainReader::readDeclaration() {
  constexpr std::string_view kOpening = "<?xml";
  if (!_bytes.starts_with(kOpening) || !isBlank(byteAt(kOpening.size()))) return true;
  std::size_t at = kOpening.size();
  if (!readAttributes(at) || _bytes.substr(at, 2) != "?>") return false;
  _hasDeclaration = true;
  _at = at + 2;
  std::size_t known = 0;
  const auto isNext = [&](std::string_view name) {
    return known < _attributes.size() && _attributes[known].name == name;
  };
  if (!isNext("version") || _attributes[known++].value != "1.0") return false;
  if (isNext("encoding")) _encoding = _attributes[known++].value;
  if (isNext("standalone")) _standalone = _attributes[known++].value;
  return known == _attributes.size() &&
         (_encoding.data() == nullptr || _encoding == "UTF-8" || _encoding == "utf-8") &&
         (_standalone.data() == nullptr || _standalone == "yes" || _standalone == "no");
}

// What is between two places of the document, which goes on behind the third.
PlainReader::Piece PlainReader::holding(std::size_t begin, std::size_t end, std::size_t behind,
                                        Piece piece) {
  if (end == std::string_view::npos || end - begin > kMaximumPiece) return Piece::unusual;
  _content = _bytes.substr(begin, end - begin);
  _at = behind;
  return piece;
}

PlainReader::Piece PlainReader::readText() {
  const std::size_t end = _bytes.find('<', _at);
  const Piece piece = holding(_at, end, end, Piece::text);
  if (piece == Piece::unusual) return piece;
  const bool anyReference = holds(_content, '&');
  const bool anyGreater = holds(_content, '>');
  _isCanonical = !anyReference && !anyGreater;
  if (anyReference && !areReferencesPlain(_content)) return Piece::unusual;
  if (anyGreater && _content.find("]]>") != std::string_view::npos) return Piece::unusual;
  if (isShortAndBlank(_content) && !_vocabulary.add(_content)) return Piece::unusual;
  return piece;
}

PlainReader::Piece PlainReader::readStart() {
  _name = nameAt(_at + 1);
  if (_name.empty() || !_vocabulary.add(_name)) return Piece::unusual;
  if (_open.empty() ? _hasRoot : _open.size() >= kMaximumDepth) return Piece::unusual;
  std::size_t at = _at + 1 + _name.size();
  _isCanonical = true;
  if (!readAttributes(at)) return Piece::unusual;
  const std::size_t end = at;
  _isEndDue = byteAt(at) == '/';
  if (_isEndDue) ++at;
  if (byteAt(at) != '>' || at + 1 - _at > kMaximumMarkup) return Piece::unusual;
  _content = _bytes.substr(_at + 1, end - _at - 1);
  _at = at + 1;
  _open.push_back(_name);
  _hasRoot = true;
  return Piece::start;
}

// Up to the first byte that belongs to none of them, blanks left behind.
bool PlainReader::readAttributes(std::size_t& at) {
  _attributes.clear();
  while (true) {
    const std::size_t blanks = behindBlanks(at) - at;
    if (!beginsName(byteAt(at + blanks))) {
      if (blanks > 0) _isCanonical = false;
      at += blanks;
      return true;
    }
    if (blanks == 0 || _attributes.size() == kMaximumAttributesOfOne) return false;
    if (blanks > 1 || _bytes[at] != ' ') _isCanonical = false;
    at += blanks;
    if (!readAttribute(at)) return false;
  }
}

bool PlainReader::readAttribute(std::size_t& at) {
  const std::string_view name = nameAt(at);
  if (name.empty() || name == "xmlns" || !isNew(name) || !_vocabulary.add(name)) return false;
  at += name.size();
  std::string_view value;
  if (!readEquals(at) || !readValue(at, value)) return false;
  _attributes.push_back({name, value});
  return true;
}

bool PlainReader::readEquals(std::size_t& at) {
  const std::size_t sign = behindBlanks(at);
  if (byteAt(sign) != '=') return false;
  const std::size_t behind = behindBlanks(sign + 1);
  if (behind != at + 1) _isCanonical = false;
  at = behind;
  return true;
}

bool PlainReader::readValue(std::size_t& at, std::string_view& value) {
  const char quote = byteAt(at);
  if (quote != '"' && quote != '\'') return false;
  const std::size_t end = _bytes.find(quote, at + 1);
  if (end == std::string_view::npos) return false;
  value = _bytes.substr(at + 1, end - at - 1);
  at = end + 1;
  bool anyReference = false;
  for (const char byte : value) {
    if (byte == '<') return false;
    anyReference |= byte == '&';
    if (byte == '>' || byte == '\t' || byte == '\n') _isCanonical = false;
  }
  if (anyReference || quote != '"') _isCanonical = false;
  return !anyReference || areReferencesPlain(value);
}

bool PlainReader::isNew(std::string_view attribute) const {
  return std::none_of(_attributes.begin(), _attributes.end(),
                      [&](const Attribute& known) { return known.name == attribute; });
}

PlainReader::Piece PlainReader::readEnd() {
  const std::size_t begin = _at + 2;
  if (_open.empty() || !_bytes.substr(begin).starts_with(_open.back())) return Piece::unusual;
  const std::size_t at = behindBlanks(begin + _open.back().size());
  if (byteAt(at) != '>' || at + 1 - _at > kMaximumMarkup) return Piece::unusual;
  _name = _open.back();
  _open.pop_back();
  _at = at + 1;
  return Piece::end;
}

PlainReader::Piece PlainReader::readInstruction() {
  const std::size_t begin = _at + 2;
  _name = nameAt(begin);
  const std::size_t end = _bytes.find("?>", begin);
  const std::size_t behindName = begin + _name.size();
  if (_name.empty() || letterCase::lowered(std::string(_name)) == "xml" || !_vocabulary.add(_name))
    return Piece::unusual;
  if (behindName != end && !isBlank(byteAt(behindName))) return Piece::unusual;
  return holding(begin, end, end + 2, Piece::instruction);
}

PlainReader::Piece PlainReader::readComment() {
  constexpr std::string_view kOpening = "<!--";
  if (!_bytes.substr(_at).starts_with(kOpening)) return Piece::unusual;
  const std::size_t begin = _at + kOpening.size();
  const std::size_t end = _bytes.find("--", begin);
  if (end == std::string_view::npos || byteAt(end + 2) != '>') return Piece::unusual;
  return holding(begin, end, end + 3, Piece::comment);
}

PlainReader::Piece PlainReader::readSection() {
  constexpr std::string_view kOpening = "<![CDATA[";
  if (_open.empty() || !_bytes.substr(_at).starts_with(kOpening)) return Piece::unusual;
  const std::size_t begin = _at + kOpening.size();
  const std::size_t end = _bytes.find("]]>", begin);
  return holding(begin, end, end + 3, Piece::section);
}

// Whatever it says: who reads on has to know it word by word.
PlainReader::Piece PlainReader::readDocumentType() {
  if (_hasRoot || _hasDocumentType) return Piece::unusual;
  _hasDocumentType = true;
  const std::size_t end = _bytes.find('>', _at);
  return holding(_at, end == std::string_view::npos ? end : end + 1, end + 1, Piece::documentType);
}

std::size_t PlainReader::behindBlanks(std::size_t at) const {
  while (at < _bytes.size() && isBlank(_bytes[at])) ++at;
  return at;
}

// Empty for none, and for one that is too long.
std::string_view PlainReader::nameAt(std::size_t at) const {
  if (!beginsName(byteAt(at))) return {};
  std::size_t end = at + 1;
  while (end < _bytes.size() && kBelongsToName[static_cast<unsigned char>(_bytes[end])]) ++end;
  return end - at > kMaximumName ? std::string_view() : _bytes.substr(at, end - at);
}

void appendDecoded(std::string_view text, std::string& to) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t reference = std::min(text.find('&', at), text.size());
    to += text.substr(at, reference - at);
    at = reference;
    if (at == text.size()) break;
    const std::optional<Reference> found = referenceAt(text, at);  // nothing else was let through
    appendCharacter(found->character, to);
    at += found->length;
  }
}

std::string decoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  appendDecoded(text, result);
  return result;
}

std::string decodedValue(std::string_view value) {
  std::string flat(value);
  std::replace_if(flat.begin(), flat.end(), isBlank, ' ');
  return decoded(flat);
}

}  // namespace installer::xml
