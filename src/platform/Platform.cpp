#include "platform/Platform.h"

#include <memory>

#include "platform/SystemPlatform.h"

namespace installer {
namespace {

Platform* replacement = nullptr;

Platform& realPlatform() {
  static const std::shared_ptr<Platform> platform = makeSystemPlatform();
  return *platform;
}

}  // namespace

Platform& Platform::current() {
  return replacement != nullptr ? *replacement : realPlatform();
}

ScopedPlatform::ScopedPlatform(Platform& platform) : _previous(replacement) {
  replacement = &platform;
}

ScopedPlatform::~ScopedPlatform() {
  replacement = _previous;
}

}  // namespace installer
