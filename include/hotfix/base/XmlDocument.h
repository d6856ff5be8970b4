#pragma once

#include <memory>

struct _xmlDoc;

namespace installer::xml {

/// Frees an XML document with all that belongs to it.
struct DocumentDeleter {
  void operator()(_xmlDoc* document) const;  ///< null is fine
};

/// An XML document that was read; null for one that could not be.
using Document = std::unique_ptr<_xmlDoc, DocumentDeleter>;

}  // namespace installer::xml
