#pragma once

#include <memory>
#include <string_view>

#include "base/XmlLibrary.h"

namespace installer::xml {

struct TreeDeleter {
  void operator()(xmlDoc* document) const;
};

// A document as libxml2 holds it. Only for sources that use libxml2.
using Tree = std::unique_ptr<xmlDoc, TreeDeleter>;

// Null for anything that is not well-formed or exceeds the bounds (see parse()).
Tree treeOf(std::string_view bytes);

// Empty for null.
inline std::string_view textOf(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

}  // namespace installer::xml
