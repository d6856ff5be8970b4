// Any text is escaped to plain ASCII, as the model escapes it, and comes back when it is decoded.

#include <algorithm>

#include "Fuzzed.h"
#include "base/Characters.h"
#include "hotfix/util/StringUtil.h"
#include "support/models/PropertiesWriterModel.h"
#include "support/models/StringModels.h"

namespace installer::fuzz {

namespace {

// The models take their time.
constexpr std::size_t kLongestModelled = 2048;

void requirePlain(const std::string& escaped) {
  require(std::ranges::all_of(escaped, [](char c) { return c >= ' ' && c <= '~'; }),
          "an escaped text is printable ASCII");
}

// Without the backslashes that are no part of a unit's escape.
std::string withoutBackslashes(const std::string& escaped) {
  std::string text;
  for (std::size_t at = 0; at < escaped.size(); ++at) {
    const bool isUnit = escaped.compare(at, 2, "\\u") == 0;
    if (escaped[at] == '\\' && !isUnit) ++at;
    text += escaped[at];
  }
  return text;
}

void readBack(const std::string& escaped, const std::string& characters) {
  require(StringUtil::convertUnicode2Characters(withoutBackslashes(escaped)) == characters,
          "an escaped text comes back");
}

}  // namespace

void tryInput(std::string_view input) {
  const std::string text(input);
  const std::string key = StringUtil::convertNSStringTo8859_1Key(text);
  const std::string value = StringUtil::convertNSStringTo8859_1Value(text);
  const std::string decoded = StringUtil::convertUnicode2Characters(text);
  requirePlain(key);
  requirePlain(value);
  if (text.size() <= kLongestModelled) {
    require(key == model::escapedKey(text), "the key is escaped as by the model");
    require(value == model::escapedValue(text), "the value is escaped as by the model");
    require(decoded == model::unicodeDecoded(text), "the text is decoded as by the model");
  }
  const std::string characters = fromUnits(toUnits(text));
  require(fromUnits(toUnits(characters)) == characters, "units and characters are the same text");
  // With one, two texts can have the same escaped form.
  if (text.find('\\') != std::string::npos) return;
  readBack(key, characters);
  readBack(value, characters);
}

}  // namespace installer::fuzz
