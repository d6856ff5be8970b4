#include "base/XmlRewriting.h"

#include "base/LibraryDocument.h"
#include "base/PlainDocument.h"

namespace installer::xml {

void DocumentDeleter::operator()(RewritableDocument* document) const {
  delete document;
}

Document parse(std::string bytes) {
  if (Document plain = PlainDocument::parse(bytes)) return plain;
  return LibraryDocument::parse(bytes);
}

}  // namespace installer::xml
