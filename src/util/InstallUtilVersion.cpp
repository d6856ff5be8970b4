#include "base/Characters.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

namespace installer {

std::string InstallUtil::generateNewManifestVersion() {
  const std::tm now = Platform::current().clock->localTime();
  const int month = now.tm_mon + 1;
  // tm_year counts from 1900, which leaves the same remainder.
  const int year = now.tm_year % 100;
  std::string version;
  for (const int field : {now.tm_mday, month, year, now.tm_hour, now.tm_min})
    version += processDate(std::to_string(field));
  return version;
}

std::string InstallUtil::processDate(const std::string& date) {
  const bool oneCharacter = !date.empty() && decodeCharacter(date, 0).length == date.size();
  return oneCharacter ? "0" + date : date;
}

}  // namespace installer
