// Texts: truths, letter case, replacements, characters that are not supported.

#import "Judge.h"

#include <algorithm>
#include <regex>
#include <utility>

#include "base/LetterCase.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/util/StringUtil.h"

namespace installer::judge {

namespace {

using Pieces = std::vector<std::string>;

const Pieces kLetters = {"a", "A", ".keystore", ".KeyStore", "\xc3\xbc", "\xc3\x9c", "U\xcc\x88",
                         "\xc3\x9f", "\xc4\xb0", "i", "I", "/", "\xce\xa3", "\xcf\x82", "K"};

// What comes behind blanks, a sign and zeros, in this order, can be more of them.
std::string kindOfTruth(const std::string& text) {
  static const std::regex beginning("^[ \\t\\n]*([+-]0*|0+)[ \\t\\n+-]");
  return std::regex_search(text, beginning) ? "signs or blanks behind the first" : "";
}

void judgeTruth() {
  static const Pieces pieces = {"0", "1", "2", "9", "+", "-", " ", "\t",
                                "Y", "y", "n", "t", "T", "e", "x", "\n"};
  const std::string text = randomText(pieces, 5);
  compare("boolValue of a text", kindOfTruth(text), shown(text),
          tell(PropertyList::booleanForKey({{"k", text}}, "k")), tell([objc(text) boolValue]));
}

bool beginsWith(NSString* text, NSString* prefix) {
  const NSRange range = [text rangeOfString:prefix options:NSCaseInsensitiveSearch];
  return range.location == 0 && range.length > 0;
}

bool hasAny(const std::string& text, const Pieces& pieces) {
  return std::any_of(pieces.begin(), pieces.end(), [&](const std::string& piece) {
    return text.find(piece) != text.npos;
  });
}

std::string kindOfLetters(const std::string& text) {
  if (hasAny(text, {"\xcc\x88"})) return "combining mark";
  return hasAny(text, {"\xcf\x82", "\xc4\xb0", "\xc3\x9f"}) ? "more than a small letter" : "";
}

void judgeLetterCase() {
  const std::string whole = randomText(kLetters, 6);
  compare("lowercaseString", "", shown(whole), letterCase::lowered(whole),
          cpp([objc(whole) lowercaseString]));
  const bool isPart = below(2) == 0;
  const std::string start =
      isPart ? whole.substr(0, below(whole.size() + 1)) : randomText(kLetters, 2);
  if ([objc(start) length] == 0 && !start.empty()) return;  // half a character
  const std::string both = shown(whole) + ", " + shown(start);
  compare("hasPrefixCaseInsensitive", kindOfLetters(whole + start), both,
          tell(InstallUtil::hasPrefixCaseInsensitive(whole, start)),
          tell(beginsWith(objc(whole), objc(start))));
  NSString* lowered = [objc(whole) lowercaseString];
  compare("lowercaseString hasPrefix", "", both,
          tell(letterCase::lowered(whole).starts_with(letterCase::lowered(start))),
          tell(start.empty() || [lowered hasPrefix:[objc(start) lowercaseString]]));
}

// The same characters, composed and decomposed.
void judgeNormalForms() {
  static const std::vector<std::pair<std::string, std::string>> forms = {
      {"\xc3\x9c", "U\xcc\x88"},
      {"\xc3\xa9", "e\xcc\x81"},
      {"\xea\xb0\x80", "\xe1\x84\x80\xe1\x85\xa1"}};
  const auto& [composed, decomposed] = anyOf(forms);
  NSString* lowered = [objc(composed + "/x") lowercaseString];
  compare("lowercaseString hasPrefix, other normal form", "",
          shown(composed) + ", " + shown(decomposed),
          tell(letterCase::lowered(composed + "/x").starts_with(letterCase::lowered(decomposed))),
          tell([lowered hasPrefix:[objc(decomposed) lowercaseString]]));
}

void judgeBinding() {
  static const Pieces pieces = {"%@", "%", "@", "a", "%%", " "};
  const std::string pattern = randomText(pieces, 6);
  std::vector<std::string> values;
  for (std::size_t count = below(4); count > 0; --count) values.push_back(anyOf(kLetters));
  NSArray* parts = [objc(pattern) componentsSeparatedByString:@"%@"];
  std::string bound = cpp([parts objectAtIndex:0]);
  for (NSUInteger place = 1; place < parts.count; ++place) {
    if (place <= values.size()) bound += values[place - 1];
    bound += cpp([parts objectAtIndex:place]);
  }
  compare("bindString:with:", "", shown(pattern),
          StringUtil::bindString(pattern, values).value_or("(nil)"), bound);
}

void judgeReplacement() {
  static const Pieces pieces = {"a", "b", "ab", "${package}", "$"};
  const std::string source = randomText(pieces, 8);
  const std::string target = anyOf(pieces);
  NSMutableString* replaced = [[objc(source) mutableCopy] autorelease];
  [replaced replaceOccurrencesOfString:objc(target)
                            withString:@"<x>"
                               options:NSBackwardsSearch
                                 range:NSMakeRange(0, replaced.length)];
  compare("replaceOccurrencesOfString: backwards", "", shown(source) + ", " + shown(target),
          StringUtil::stringByReplacingOccurrencesOfString(source, target, "<x>"), cpp(replaced));
}

void judgeCharacters() {
  static const Pieces pieces = {"/", "a", ":", ";", "%", "~", " ", "=", "\xc3\x9c"};
  const std::string path = randomText(pieces, 4);
  NSCharacterSet* refused = [NSCharacterSet characterSetWithCharactersInString:@"!\"';\\#%|=?"];
  bool contains = [objc(path) rangeOfCharacterFromSet:refused].location != NSNotFound;
  for (NSString* component in [objc(path) pathComponents])
    contains = contains || [component rangeOfString:@":"].location != NSNotFound;
  compare("containUnSupportedCharacters", "", shown(path),
          tell(InstallUtil::containUnSupportedCharacters(path)), tell(contains));
}

}  // namespace

void judgeTexts() {
  for (const auto judge : {judgeTruth, judgeLetterCase, judgeNormalForms, judgeBinding,
                           judgeReplacement, judgeCharacters})
    judge();
}

}  // namespace installer::judge
