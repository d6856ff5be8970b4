#include "platform/macos/CoreFoundationPreferences.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

#include "platform/UserContext.h"
#include "platform/posix/EffectiveUser.h"

namespace installer {
namespace {

struct Releaser {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};

// Releases an object that a Create or Copy function answered.
template <class Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, Releaser>;

Owned<CFStringRef> textOf(std::string_view text) {
  return Owned<CFStringRef>(
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                              static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

Owned<CFDictionaryRef> copyDomain(CFStringRef name) {
  return Owned<CFDictionaryRef>(
      CFPreferencesCopyMultiple(nullptr, name, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
}

Owned<CFDictionaryRef> copyDomainAs(const std::optional<User>& user, CFStringRef name,
                                    UserContext& users) {
  const EffectiveUser scope(users, user ? std::optional(user->uid) : std::nullopt);
  return copyDomain(name);
}

// The values by way of their binary form. An empty domain is one that the user does not have.
std::optional<PropertyList::Dictionary> dictionaryOf(CFDictionaryRef values) {
  if (values == nullptr || CFDictionaryGetCount(values) == 0) return std::nullopt;
  const Owned<CFDataRef> data(CFPropertyListCreateData(
      kCFAllocatorDefault, values, kCFPropertyListBinaryFormat_v1_0, 0, nullptr));
  if (!data) return std::nullopt;
  return PropertyList::parseDictionary({reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
                                        static_cast<std::size_t>(CFDataGetLength(data.get()))});
}

}  // namespace

std::optional<PropertyList::Dictionary> CoreFoundationPreferences::domain(std::string_view name) {
  const Owned<CFStringRef> text = textOf(name);
  if (!text) return std::nullopt;
  const CFStringRef application = name == kGlobalDomain ? kCFPreferencesAnyApplication : text.get();
  auto values = dictionaryOf(copyDomainAs(_users.consoleUser(), application, _users).get());
  return values ? values : _files.domain(name);
}

}  // namespace installer
