#include "base/XmlRewriting.h"

#include "base/LibraryDocument.h"

namespace installer::xml {

void DocumentDeleter::operator()(RewritableDocument* document) const {
  delete document;
}

Document parse(std::string bytes) {
  return LibraryDocument::parse(bytes);
}

}  // namespace installer::xml
