// The services that only macOS has in this form, in the contract suites.

#include <CoreFoundation/CoreFoundation.h>
#include <mach-o/dyld.h>
#include <sys/param.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/files/PosixFileManager.h"
#include "platform/macos/AppKitPasteboard.h"
#include "platform/macos/AslSystemLog.h"
#include "platform/macos/CoreFoundationPreferences.h"
#include "platform/macos/LibprocProcessTable.h"
#include "platform/posix/FilePasteboard.h"
#include "platform/posix/PosixUserContext.h"
#include "platform/posix/UserPreferences.h"
#include "unit/platform/PasteboardContract.h"
#include "unit/platform/PreferencesContract.h"
#include "unit/platform/ProcessTableContract.h"
#include "unit/platform/SystemLogContract.h"

namespace installer::test {
namespace {

INSTANTIATE_TEST_SUITE_P(Macos, SystemLogContractTest,
                         ::testing::Values(SystemLogKind{
                             "Real",
                             [](Clock& clock) { return std::make_unique<AslSystemLog>(clock); }}),
                         [](const auto& given) { return given.param.name; });

std::string ownExecutable() {
  std::array<char, MAXPATHLEN> path{};
  auto size = static_cast<std::uint32_t>(path.size());
  if (_NSGetExecutablePath(path.data(), &size) != 0) return "";
  return std::filesystem::canonical(path.data()).string();
}

INSTANTIATE_TEST_SUITE_P(Macos, ProcessTableContractTest,
                         ::testing::Values(ProcessTableKind{
                             "Real", ownExecutable,
                             [] { return std::make_unique<LibprocProcessTable>(); }}),
                         [](const auto& given) { return given.param.name; });

// The machine has one pasteboard, which may hold the record of an earlier test; the file is the
// test's.
struct RecordFile {
  FilePasteboard file;
};

class PasteboardWithFile : RecordFile, public AppKitPasteboard {
 public:
  explicit PasteboardWithFile(Sandbox& machine)
      : RecordFile{{machine.files(), machine.paths().pasteboard}}, AppKitPasteboard(file) {}
};

INSTANTIATE_TEST_SUITE_P(Macos, PasteboardContractTest,
                         ::testing::Values(PasteboardKind{
                             "Real",
                             [](Sandbox& machine) {
                               auto own = std::make_unique<PasteboardWithFile>(machine);
                               own->clear();
                               return own;
                             }}),
                         [](const auto& given) { return given.param.name; });

// The defaults of the user who runs the tests. What is stored is removed at the end.
class UserDefaults : public PreferencesSubject {
 public:
  ~UserDefaults() override {
    for (const CFStringRef domain : _domains) {
      set(domain, nullptr, _keys);
      CFRelease(domain);
    }
    CFRelease(_keys);
  }

  Preferences& preferences() override { return _preferences; }

  void store(const std::string& domain, const PropertyList::Dictionary& values) override {
    const std::string list = PropertyList::serialize(values).value_or("");
    const CFDataRef bytes = CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(list.data()),
                                         static_cast<CFIndex>(list.size()));
    const auto stored = static_cast<CFDictionaryRef>(
        CFPropertyListCreateWithData(nullptr, bytes, kCFPropertyListImmutable, nullptr, nullptr));
    for (const auto& [key, value] : values) {
      const CFStringRef name = textOf(key);
      CFArrayAppendValue(_keys, name);
      CFRelease(name);
    }
    _domains.push_back(domain == Preferences::kGlobalDomain
                           ? static_cast<CFStringRef>(CFRetain(kCFPreferencesAnyApplication))
                           : textOf(domain));
    set(_domains.back(), stored, nullptr);
    CFRelease(stored);
    CFRelease(bytes);
  }

 private:
  static CFStringRef textOf(const std::string& text) {
    return CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8);
  }
  static void set(CFStringRef domain, CFDictionaryRef values, CFArrayRef removed) {
    CFPreferencesSetMultiple(values, removed, domain, kCFPreferencesCurrentUser,
                             kCFPreferencesAnyHost);
    CFPreferencesSynchronize(domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
  }

  std::vector<CFStringRef> _domains;
  CFMutableArrayRef _keys = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
  PosixUserContext _users;
  PosixFileManager _files{_users};
  UserPreferences _inFiles{_files, _users};
  CoreFoundationPreferences _preferences{_users, _inFiles};
};

INSTANTIATE_TEST_SUITE_P(Macos, PreferencesContractTest,
                         ::testing::Values(PreferencesKind{
                             "Real", [] { return std::make_unique<UserDefaults>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
