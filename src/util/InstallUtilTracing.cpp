#include "base/LetterCase.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/Preferences.h"
#include "platform/SystemLog.h"

namespace installer {

bool InstallUtil::shouldWriteTraces() {
  constexpr const char* kEnabled = "com.kiv.rcp.install.mac.traceEnable";
  const auto preferences = Platform::current().preferences->domain("com.kiv.rcp.install.mac");
  // Support needs the trace of every run: the preference is read for its users' sake alone.
  if (preferences) (void)PropertyList::booleanForKey(*preferences, kEnabled);  // not heeded
  return true;
}

int InstallUtil::setupTraceOutput() {
  return shouldWriteTraces() && openTraceFile() == -1 ? -1 : 0;
}

int InstallUtil::openTraceFile() {
  return openTraceFile(Platform::current().paths.traceFile);
}

// The log refuses to mirror itself into -1.
int InstallUtil::openTraceFile(const std::string& path) {
  Platform& platform = Platform::current();
  const int descriptor = platform.files->openLog(path);
  if (platform.log->addFile(descriptor) == 0) return descriptor;
  platform.files->closeLog(descriptor);
  return -1;
}

void InstallUtil::closeTraceFile(int descriptor) {
  Platform& platform = Platform::current();
  platform.log->removeFile(descriptor);
  platform.files->closeLog(descriptor);
}

std::string InstallUtil::getCurrentLocale() {
  const auto preferences = Platform::current().preferences->domain(Preferences::kGlobalDomain);
  std::optional<std::string> locale;
  if (preferences) locale = PropertyList::textForKey(*preferences, "AppleLocale");
  return locale.value_or("en_US");
}

bool InstallUtil::containUnSupportedCharacters(const std::optional<std::string>& path) {
  return path && path->find_first_of("!\"';\\#%|=?:") != std::string::npos;
}

bool InstallUtil::hasPrefixCaseInsensitive(std::string_view string, std::string_view prefix) {
  return !prefix.empty() && letterCase::beginsIgnoringCase(string, prefix);
}

}  // namespace installer
