#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace installer::xml {

// Bounds the different words of a document: the library keeps each of them once, and refuses
// documents with too many.
class PlainVocabulary {
 public:
  // False when it may be too much now.
  [[nodiscard]] bool add(std::string_view word);

 private:
  std::array<std::string_view, 256> _recent;  // some of the words that were added
  std::size_t _size = 0;                      // bytes of all that were not recent
};

// Reads a document that is plain, piece by piece, as views into its bytes. Plain is what programs
// write who want to be read: UTF-8 without line ends of other systems, names of ASCII letters
// without prefixes, nothing declared, all of it well within every bound. Whatever else a document
// is, be it malformed, is `unusual`: the XML library has to say what becomes of it. So that it does
// not matter who reads, this one understands each plain document exactly as the library does.
class PlainReader {
 public:
  enum class Piece {
    start,    // of an element
    end,      // of an element; comes for one without content, too
    text,     // all that is between two of the others
    section,  // CDATA
    comment,
    instruction,
    documentType,  // its declaration, of which there is one at most
    finish,        // of the document, which has been plain
    unusual,       // nothing that was read counts
  };

  struct Attribute {
    std::string_view name;
    std::string_view value;  // what stands between the quotation marks, see decoded()
  };

  // `bytes` have to outlive this, and all that it answers.
  explicit PlainReader(std::string_view bytes);

  // Nothing may be asked behind finish and unusual.
  Piece next();

  // Of the last piece: an element's name, an instruction's target.
  std::string_view name() const { return _name; }

  // Of the last piece: of a start what stands between its angle brackets, without the slash; of a
  // text all of it; of a section, comment or instruction (target and all) what it holds; of a
  // document type its whole declaration.
  std::string_view content() const { return _content; }

  // Of the last start.
  const std::vector<Attribute>& attributes() const { return _attributes; }

  // Whether the content of the last start or text is just as the library would write it.
  bool isCanonical() const { return _isCanonical; }

  // As declared; empty when it is not.
  std::string_view encoding() const { return _encoding; }
  std::string_view standalone() const { return _standalone; }
  bool hasDeclaration() const { return _hasDeclaration; }

 private:
  bool readDeclaration();
  Piece readMarkup();
  Piece readText();
  Piece readStart();
  Piece readEnd();
  Piece readInstruction();
  Piece readComment();
  Piece readSection();
  Piece readDocumentType();
  Piece holding(std::size_t begin, std::size_t end, std::size_t behind, Piece piece);
  bool readAttributes(std::size_t& at);
  bool readAttribute(std::size_t& at);
  bool readEquals(std::size_t& at);
  bool readValue(std::size_t& at, std::string_view& value);
  bool isNew(std::string_view attribute) const;
  std::size_t behindBlanks(std::size_t at) const;
  std::string_view nameAt(std::size_t at) const;
  char byteAt(std::size_t at) const { return at < _bytes.size() ? _bytes[at] : '\0'; }

  std::string_view _bytes;
  std::size_t _at = 0;
  bool _isUsable = false;
  bool _hasDeclaration = false;
  bool _hasDocumentType = false;
  bool _hasRoot = false;
  bool _isEndDue = false;  // of an element that has no content
  bool _isCanonical = false;
  std::string_view _name;
  std::string_view _content;
  std::string_view _encoding;
  std::string_view _standalone;
  std::vector<Attribute> _attributes;
  std::vector<std::string_view> _open;  // names of the elements around, the root's first
  PlainVocabulary _vocabulary;
};

// Adds a text or value as it is meant: with its references replaced.
void appendDecoded(std::string_view text, std::string& to);
std::string decoded(std::string_view text);

// The same for the value of an attribute, whose line breaks are blanks.
std::string decodedValue(std::string_view value);

}  // namespace installer::xml
