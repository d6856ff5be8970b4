#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hotfix/base/XmlDocument.h"

// XML documents that are read, changed in places and written back with everything else as it was.
namespace installer::xml {

// Of one document. Texts do not count: each has another kind of node beside it.
inline constexpr std::size_t kMaximumNodes = 1'000'000;

// Put evenly: every child of an element that holds only elements (comments and processing
// instructions among them) stands on a line of its own, so many blanks deeper than its parent.
// Elements with text of their own are left alone with all below them, and so is what stands under
// xml:space="preserve".
inline constexpr int kBlanksALevel = 2;

class RewritableDocument {
 public:
  using Element = const void*;  // one of this document's elements; null for none
  using Change = std::function<std::string(std::string_view)>;  // an old value's new one, in UTF-8

  RewritableDocument() = default;
  RewritableDocument(const RewritableDocument&) = delete;
  RewritableDocument& operator=(const RewritableDocument&) = delete;
  virtual ~RewritableDocument() = default;

  virtual Element root() const = 0;

  // Direct children, in their order. The name is meant as it is written: one with a prefix is
  // another name, a default namespace none.
  virtual std::vector<Element> childrenNamed(Element parent, std::string_view name) const = 0;

  // Changes the attribute (without a prefix) of each of the elements that has it. Entity references
  // in its value stay as they are, unless the change concerns what they stand for: then the value
  // is written out, when it is not too long.
  virtual void changeAttributes(const std::vector<Element>& elements, std::string_view name,
                                const Change& change) = 0;

  // The document put evenly, in the encoding that it declares, UTF-8 without one. What the encoding
  // lacks becomes character references. nullopt when the document has come to hold what XML cannot
  // tell (control characters, say).
  [[nodiscard]] virtual std::optional<std::string> serialize() const = 0;
};

// Null for anything that is not well-formed or exceeds the bounds (see Parser and kMaximumNodes).
// Entity references, CDATA sections and the declared encoding are kept; nothing outside the
// document is loaded. Nothing is written to standard error.
Document parse(std::string bytes);

}  // namespace installer::xml
