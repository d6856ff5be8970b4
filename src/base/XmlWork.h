#pragma once

#include "base/XmlLibrary.h"

namespace installer::xml {

// Whatever is done with libxml2 is done while one of these is alive. It keeps the library from
// writing to standard error, for some of its complaints (failed conversions, say) pass by the
// parser's own handler and would go there, and it notices when the library is given no memory: that
// mostly looks like a fault of the document, or like nothing at all. At its end everything is put
// back as it was. They nest. Only for sources that use libxml2.
class XmlWork {
 public:
  XmlWork();
  XmlWork(const XmlWork&) = delete;
  XmlWork& operator=(const XmlWork&) = delete;
  ~XmlWork();

  // To be called when the work is done and before its outcome is used: throws std::bad_alloc when
  // the library was given no memory at any time since this began.
  void checkMemory() const;

 private:
  void* const _errorContext;
  const xmlStructuredErrorFunc _errorHandler;
  const unsigned long _refusalsBefore;
};

}  // namespace installer::xml
