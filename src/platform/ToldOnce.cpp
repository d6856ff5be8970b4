#include "hotfix/platform/ToldOnce.h"

#include "platform/Platform.h"

namespace installer {

ToldOnce::ToldOnce() : _platform(Platform::current()) {
  ++_platform.toldOnce;
}

ToldOnce::~ToldOnce() {
  if (--_platform.toldOnce == 0) _platform.saidOnce.clear();
}

}  // namespace installer
