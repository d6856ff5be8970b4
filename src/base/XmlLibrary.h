#pragma once

#include <libxml/SAX2.h>
#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlmemory.h>
#include <libxml/xmlsave.h>

namespace installer::xml {

// The library's functions, by its own names. It is loaded for the first document that is not plain
// (see PlainReader): it brings others along that take longer to load than most runs need for all of
// their own work. It stays loaded.
class XmlLibrary {
  void* const _handle;  // comes first: all others are looked up in it

 public:
  XmlLibrary();
  XmlLibrary(const XmlLibrary&) = delete;
  XmlLibrary& operator=(const XmlLibrary&) = delete;

  decltype(&::xmlCreateMemoryParserCtxt) xmlCreateMemoryParserCtxt =
      symbol("xmlCreateMemoryParserCtxt");
  decltype(&::xmlFreeParserCtxt) xmlFreeParserCtxt = symbol("xmlFreeParserCtxt");
  decltype(&::xmlCtxtUseOptions) xmlCtxtUseOptions = symbol("xmlCtxtUseOptions");
  decltype(&::xmlParseDocument) xmlParseDocument = symbol("xmlParseDocument");
  decltype(&::xmlStopParser) xmlStopParser = symbol("xmlStopParser");
  decltype(&::xmlParserInputGrow) xmlParserInputGrow = symbol("xmlParserInputGrow");
  decltype(&::xmlSAXVersion) xmlSAXVersion = symbol("xmlSAXVersion");

  decltype(&::xmlSetStructuredErrorFunc) xmlSetStructuredErrorFunc =
      symbol("xmlSetStructuredErrorFunc");
  decltype(&::__xmlStructuredError) xmlStructuredErrorPlace = symbol("__xmlStructuredError");
  decltype(&::__xmlStructuredErrorContext) xmlStructuredErrorContextPlace =
      symbol("__xmlStructuredErrorContext");
  decltype(&::xmlMemGet) xmlMemGet = symbol("xmlMemGet");
  decltype(&::xmlMemSetup) xmlMemSetup = symbol("xmlMemSetup");
  decltype(&::xmlFree) xmlFreePlace = symbol("xmlFree");

  decltype(&::xmlNewDoc) xmlNewDoc = symbol("xmlNewDoc");
  decltype(&::xmlFreeDoc) xmlFreeDoc = symbol("xmlFreeDoc");
  decltype(&::xmlDocGetRootElement) xmlDocGetRootElement = symbol("xmlDocGetRootElement");
  decltype(&::xmlCreateIntSubset) xmlCreateIntSubset = symbol("xmlCreateIntSubset");
  decltype(&::xmlGetDocEntity) xmlGetDocEntity = symbol("xmlGetDocEntity");
  decltype(&::xmlAddDocEntity) xmlAddDocEntity = symbol("xmlAddDocEntity");
  decltype(&::xmlFreeEnumeration) xmlFreeEnumeration = symbol("xmlFreeEnumeration");
  decltype(&::xmlIsBlankNode) xmlIsBlankNode = symbol("xmlIsBlankNode");
  decltype(&::xmlNewDocText) xmlNewDocText = symbol("xmlNewDocText");
  decltype(&::xmlNodeSetContent) xmlNodeSetContent = symbol("xmlNodeSetContent");
  decltype(&::xmlAddChild) xmlAddChild = symbol("xmlAddChild");
  decltype(&::xmlAddPrevSibling) xmlAddPrevSibling = symbol("xmlAddPrevSibling");
  decltype(&::xmlUnlinkNode) xmlUnlinkNode = symbol("xmlUnlinkNode");
  decltype(&::xmlFreeNode) xmlFreeNode = symbol("xmlFreeNode");
  decltype(&::xmlGetNsProp) xmlGetNsProp = symbol("xmlGetNsProp");
  decltype(&::xmlSetProp) xmlSetProp = symbol("xmlSetProp");
  decltype(&::xmlCharStrdup) xmlCharStrdup = symbol("xmlCharStrdup");

  decltype(&::xmlBufferCreate) xmlBufferCreate = symbol("xmlBufferCreate");
  decltype(&::xmlBufferFree) xmlBufferFree = symbol("xmlBufferFree");
  decltype(&::xmlBufferContent) xmlBufferContent = symbol("xmlBufferContent");
  decltype(&::xmlBufferLength) xmlBufferLength = symbol("xmlBufferLength");
  decltype(&::xmlSaveToBuffer) xmlSaveToBuffer = symbol("xmlSaveToBuffer");
  decltype(&::xmlSaveDoc) xmlSaveDoc = symbol("xmlSaveDoc");
  decltype(&::xmlSaveClose) xmlSaveClose = symbol("xmlSaveClose");

 private:
  // What it names becomes a pointer of the type that is wanted.
  struct Symbol {
    void* address;
    template <class Named>
    operator Named*() const {
      return reinterpret_cast<Named*>(address);
    }
  };

  Symbol symbol(const char* name) const;
};

// The only way to the library. Throws LibraryLack, also when there is no memory to load it.
const XmlLibrary& library();

}  // namespace installer::xml
