#pragma once

#include <libxml/xmlerror.h>

namespace installer {

// Keeps libxml2 from writing to standard error while it is alive: some of its complaints (failed
// conversions, say) pass by the parser's own handler and would go there. What was installed before
// is put back. Only for sources that use libxml2.
class QuietXml {
 public:
  QuietXml() { xmlSetStructuredErrorFunc(nullptr, drop); }
  QuietXml(const QuietXml&) = delete;
  QuietXml& operator=(const QuietXml&) = delete;
  ~QuietXml() { xmlSetStructuredErrorFunc(_context, _handler); }

 private:
  // The library's versions differ in the type of the second argument.
  template <class Error>
  static void drop(void*, Error) {}

  void* _context = xmlStructuredErrorContext;
  xmlStructuredErrorFunc _handler = xmlStructuredError;
};

}  // namespace installer
