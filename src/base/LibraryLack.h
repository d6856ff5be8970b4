#pragma once

#include <stdexcept>

namespace installer::xml {

// A document needs the XML library, which cannot be loaded; what() says which and why. Thrown like
// std::bad_alloc: it is not the document's fault, so that no answer about it would be right.
class LibraryLack : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace installer::xml
