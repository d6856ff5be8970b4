#include "ctl/support/ArchiveLibrary.h"

#include <dlfcn.h>

namespace installer::ctl::support {

ArchiveLibrary::ArchiveLibrary() : _handle(dlopen(HOTFIX_ARCHIVE_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}

ArchiveLibrary::Symbol ArchiveLibrary::symbol(const char* name) {
  void* const address = _handle == nullptr ? nullptr : dlsym(_handle, name);
  if (address == nullptr && _lack.empty()) {
    const char* const reason = dlerror();
    _lack = reason == nullptr ? HOTFIX_ARCHIVE_LIBRARY : reason;
  }
  return {address};
}

const ArchiveLibrary& archiveLibrary() {
  static const ArchiveLibrary loaded;
  return loaded;
}

}  // namespace installer::ctl::support
