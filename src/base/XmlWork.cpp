#include "base/XmlWork.h"

#include <new>

namespace installer::xml {

namespace {

// The library's allocation as it was found. Blocks may outlive the work.
struct Allocation {
  xmlFreeFunc free = nullptr;
  xmlMallocFunc malloc = nullptr;
  xmlReallocFunc realloc = nullptr;
  xmlStrdupFunc strdup = nullptr;
};

Allocation found;
int depth = 0;               // works under way
unsigned long refusals = 0;  // blocks that were asked for in vain

template <class Block>
Block* noted(Block* block) {
  if (block == nullptr) ++refusals;
  return block;
}

void* notedMalloc(std::size_t size) {
  return noted(found.malloc(size));
}

void* notedRealloc(void* block, std::size_t size) {
  return noted(found.realloc(block, size));
}

char* notedStrdup(const char* text) {
  return noted(found.strdup(text));
}

// The library's versions differ in the type of the second argument.
template <class Error>
void drop(void*, Error) {}

}  // namespace

XmlWork::XmlWork()
    : _errorContext(*library().xmlStructuredErrorContextPlace()),
      _errorHandler(*library().xmlStructuredErrorPlace()),
      _refusalsBefore(refusals) {
  library().xmlSetStructuredErrorFunc(nullptr, drop);
  if (depth++ > 0) return;
  library().xmlMemGet(&found.free, &found.malloc, &found.realloc, &found.strdup);
  library().xmlMemSetup(found.free, notedMalloc, notedRealloc, notedStrdup);
}

XmlWork::~XmlWork() {
  if (--depth == 0) library().xmlMemSetup(found.free, found.malloc, found.realloc, found.strdup);
  library().xmlSetStructuredErrorFunc(_errorContext, _errorHandler);
}

void XmlWork::checkMemory() const {
  if (refusals != _refusalsBefore) throw std::bad_alloc();
}

}  // namespace installer::xml
