#include "base/XmlLibrary.h"

#include <dlfcn.h>

#include <string>

#include "base/LibraryLack.h"

namespace installer::xml {

namespace {

[[noreturn]] void throwLack() {
  const char* reason = dlerror();
  throw LibraryLack(reason == nullptr ? HOTFIX_XML_LIBRARY : std::string(reason));
}

// The library itself and what it needs are all bound at once: none of it can be turned to something
// else later on.
void* load() {
  void* handle = dlopen(HOTFIX_XML_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) throwLack();
  return handle;
}

}  // namespace

XmlLibrary::XmlLibrary() : _handle(load()) {}

XmlLibrary::Symbol XmlLibrary::symbol(const char* name) const {
  void* address = dlsym(_handle, name);
  if (address == nullptr) throwLack();
  return {address};
}

const XmlLibrary& library() {
  static const XmlLibrary loaded;
  return loaded;
}

}  // namespace installer::xml
