#pragma once

#include <memory>

namespace installer::xml {

class RewritableDocument;

/// Frees an XML document with all that belongs to it.
struct DocumentDeleter {
  void operator()(RewritableDocument* document) const;  ///< null is fine
};

/// An XML document that was read; null for one that could not be.
using Document = std::unique_ptr<RewritableDocument, DocumentDeleter>;

}  // namespace installer::xml
