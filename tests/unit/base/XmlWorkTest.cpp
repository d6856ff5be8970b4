#include "base/XmlWork.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "base/LibraryDocument.h"
#include "base/XmlPropertyListReader.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#else
inline void __lsan_disable() {}
inline void __lsan_enable() {}
#endif

namespace installer::xml {
namespace {

// Requests until one fails; below 0: none fails.
int requestsLeft = -1;

bool isRefused() {
  return requestsLeft >= 0 && requestsLeft-- == 0;
}

void* refusingMalloc(std::size_t size) {
  return isRefused() ? nullptr : std::malloc(size);
}

void* refusingRealloc(void* block, std::size_t size) {
  return isRefused() ? nullptr : std::realloc(block, size);
}

char* refusingStrdup(const char* text) {
  return isRefused() ? nullptr : strdup(text);
}

// A host that has given the library an allocation of its own.
class XmlWorkTest : public ::testing::Test {
 protected:
  // The library itself forgets a document type for whose name it gets no memory.
  XmlWorkTest() {
    __lsan_disable();
    xmlMemGet(&_free, &_malloc, &_realloc, &_strdup);
    xmlMemSetup(std::free, refusingMalloc, refusingRealloc, refusingStrdup);
  }
  ~XmlWorkTest() override {
    requestsLeft = -1;
    xmlMemSetup(_free, _malloc, _realloc, _strdup);
    __lsan_enable();
  }

  // How often the action was given all memory but one block before it could do without refusals.
  template <class Action>
  static int refusalsThrownBy(Action action) {
    for (int failing = 0;; ++failing) {
      requestsLeft = failing;
      try {
        action();
      } catch (const std::bad_alloc&) {
        EXPECT_LT(requestsLeft, 0) << "thrown without a refusal";
        continue;
      }
      const bool refused = requestsLeft < 0;
      requestsLeft = -1;
      EXPECT_FALSE(refused) << "request " << failing << " was refused and nobody told";
      return failing;
    }
  }

  xmlFreeFunc _free = nullptr;
  xmlMallocFunc _malloc = nullptr;
  xmlReallocFunc _realloc = nullptr;
  xmlStrdupFunc _strdup = nullptr;
};

constexpr const char* kDocument =
    "<?xml version='1.0'?><!DOCTYPE m [<!ENTITY e 'v'><!ATTLIST m b CDATA 'd'>]>"
    "<m a='1' xmlns:p='u'><!--c--><p:b>text&e;</p:b><c><![CDATA[x]]></c><?d e?></m>";

TEST_F(XmlWorkTest, RefusedRequestIsNoticed) {
  const XmlWork work;
  EXPECT_NO_THROW(work.checkMemory());

  requestsLeft = 0;
  EXPECT_EQ(xmlMalloc(1), nullptr);
  EXPECT_THROW(work.checkMemory(), std::bad_alloc);

  const XmlWork later;
  EXPECT_NO_THROW(later.checkMemory());
  requestsLeft = 0;
  EXPECT_EQ(xmlRealloc(nullptr, 1), nullptr);
  EXPECT_THROW(later.checkMemory(), std::bad_alloc);

  const XmlWork last;
  requestsLeft = 0;
  EXPECT_EQ(xmlMemStrdup("text"), nullptr);
  EXPECT_THROW(last.checkMemory(), std::bad_alloc);
}

TEST_F(XmlWorkTest, EverythingIsPutBackAtTheEndOfTheOutermost) {
  {
    const XmlWork work;
    { const XmlWork inner; }
    EXPECT_NE(xmlMalloc, refusingMalloc);
  }

  EXPECT_EQ(xmlMalloc, refusingMalloc);
  EXPECT_EQ(xmlRealloc, refusingRealloc);
  EXPECT_EQ(xmlMemStrdup, refusingStrdup);
}

TEST_F(XmlWorkTest, EveryRefusalWhileADocumentIsReadAndPutEvenlyIsThrown) {
  EXPECT_GT(refusalsThrownBy([] { EXPECT_TRUE(LibraryDocument::parse(kDocument)); }), 25);
}

TEST_F(XmlWorkTest, EveryRefusalWhileADocumentIsWrittenIsThrown) {
  const Document document = LibraryDocument::parse(kDocument);

  EXPECT_GT(refusalsThrownBy([&] { EXPECT_TRUE(document->serialize()); }), 20);
}

TEST_F(XmlWorkTest, EveryRefusalWhileAPropertyListIsReadIsThrown) {
  constexpr const char* list = "<plist>\r\n<dict><key>k</key><string>text</string></dict></plist>";

  EXPECT_GT(refusalsThrownBy([] { EXPECT_TRUE(PropertyList::readXml(list)); }), 10);
}

}  // namespace
}  // namespace installer::xml
