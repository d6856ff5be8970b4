#include "hotfix/util/StringUtil.h"

#include <cstddef>

#include "base/Characters.h"
#include "hotfix/base/Path.h"
#include "hotfix/platform/HomeFolders.h"
#include "platform/Platform.h"
#include "util/PropertyEscapes.h"

namespace installer {

namespace {

constexpr std::size_t kEscapeLength = 6;  // backslash, "u" and four places
constexpr std::string_view kPlaceholder = "%@";

std::optional<unsigned> hexDigitValue(char16_t unit) {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10u;
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10u;
  return std::nullopt;
}

bool isUnicodeEscape(std::u16string_view units) {
  return units.size() >= kEscapeLength && units[0] == u'\\' && units[1] == u'u';
}

// What is no digit adds nothing to the number.
char16_t unitSpelledBy(std::u16string_view places) {
  unsigned number = 0;
  for (const char16_t place : places)
    if (const std::optional<unsigned> digit = hexDigitValue(place)) number = number * 16 + *digit;
  return static_cast<char16_t>(number);
}

// Where `target` is found going backwards, last place first; found places do not overlap.
std::vector<std::size_t> placesFromTheEnd(std::string_view source, std::string_view target) {
  std::vector<std::size_t> places;
  if (target.empty()) return places;
  std::size_t end = source.size();
  while (end >= target.size()) {
    const std::size_t place = source.rfind(target, end - target.size());
    if (place == std::string_view::npos) break;
    places.push_back(place);
    end = place;
  }
  return places;
}

}  // namespace

std::string StringUtil::convertNSStringTo8859_1Key(std::string_view string) {
  std::string escaped;
  appendEscapedKey(string, escaped);
  return escaped;
}

std::string StringUtil::convertNSStringTo8859_1Value(std::string_view string) {
  std::string escaped;
  appendEscapedValue(string, escaped);
  return escaped;
}

void StringUtil::addHexDigits(char16_t character, std::string& toString) {
  appendHexDigits(character, toString);
}

std::string StringUtil::convertUnicode2Characters(std::string_view string) {
  const std::u16string units = toUnits(string);
  std::u16string converted;
  for (std::size_t place = 0; place < units.size();) {
    const auto rest = std::u16string_view(units).substr(place);
    const bool escape = isUnicodeEscape(rest);
    converted += escape ? unitSpelledBy(rest.substr(2, 4)) : units[place];
    place += escape ? kEscapeLength : 1;
  }
  return fromUnits(converted);
}

std::optional<std::string> StringUtil::charAtIndex(long index,
                                                   const std::optional<std::string>& ofString) {
  if (!ofString || index < 0) return std::nullopt;
  const std::u16string units = toUnits(*ofString);
  const auto place = static_cast<std::size_t>(index);
  if (place >= units.size()) return std::nullopt;
  return fromUnits(std::u16string_view(units).substr(place, 1));
}

std::string StringUtil::stringByReplacingOccurrencesOfString(std::string_view source,
                                                             std::string_view target,
                                                             std::string_view withString) {
  const std::vector<std::size_t> places = placesFromTheEnd(source, target);
  std::string replaced;
  std::size_t copied = 0;
  for (auto place = places.rbegin(); place != places.rend(); ++place) {
    replaced.append(source.substr(copied, *place - copied)).append(withString);
    copied = *place + target.size();
  }
  return replaced.append(source.substr(copied));
}

std::string StringUtil::boolToString(bool boolean) {
  return boolean ? "true" : "false";
}

void StringUtil::addTranslationSignToString(const std::string& /*string*/) {}

std::string StringUtil::addQuotesToString(std::string_view string) {
  return std::string("\"").append(string).append("\"");
}

std::optional<std::string> StringUtil::getVolume(const std::optional<std::string>& path) {
  if (!path) return std::nullopt;
  const std::string& volumes = Platform::current().paths.volumes;
  std::string folder = path::expandingTilde(*path);
  std::string parent = path::deletingLastComponent(folder);
  while (parent != volumes && parent != "/" && !parent.empty()) {
    folder = parent;
    parent = path::deletingLastComponent(folder);
  }
  if (parent != volumes) return "/";
  return path::appendingComponent(parent, path::lastComponent(folder));
}

std::optional<std::string> StringUtil::bindString(const std::optional<std::string>& pattern,
                                                  const std::vector<std::string>& with) {
  if (!pattern) return std::nullopt;
  std::string bound;
  std::size_t begin = 0;
  std::size_t number = 0;
  for (std::size_t end; (end = pattern->find(kPlaceholder, begin)) != std::string::npos; ++number) {
    bound.append(*pattern, begin, end - begin);
    if (number < with.size()) bound += with[number];
    begin = end + kPlaceholder.size();
  }
  return bound.append(*pattern, begin);
}

}  // namespace installer
