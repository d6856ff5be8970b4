#pragma once

#include <utility>

#include "base/XmlRewriting.h"
#include "base/XmlTree.h"

namespace installer::xml {

// Any document, as libxml2 holds and writes it.
class LibraryDocument : public RewritableDocument {
 public:
  // See xml::parse().
  static Document parse(std::string_view bytes);

  Element root() const override;
  std::vector<Element> childrenNamed(Element parent, std::string_view name) const override;
  void changeAttributes(const std::vector<Element>& elements, std::string_view name,
                        const Change& change) override;
  [[nodiscard]] std::optional<std::string> serialize() const override;

 private:
  explicit LibraryDocument(Tree tree) : _tree(std::move(tree)) {}

  Tree _tree;
};

}  // namespace installer::xml
