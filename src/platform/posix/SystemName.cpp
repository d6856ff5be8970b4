#include "platform/SystemName.h"

#include <sys/utsname.h>

namespace installer {

SystemName systemName() {
  utsname told{};
  if (::uname(&told) < 0) return {};
  return {told.sysname, told.release, told.version, told.machine};
}

}  // namespace installer
