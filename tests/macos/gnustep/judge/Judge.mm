#import "Judge.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "Known.h"

namespace installer::judge {

std::mt19937_64 generator;

namespace {

struct Difference {
  int count = 0;
  std::string example;  // the first
};

std::map<std::string, Difference> differences;
std::map<std::string, int> comparisons;

const Known* knownOf(const std::string& what) {
  const auto* known = std::find_if(std::begin(kKnown), std::end(kKnown), [&](const Known& entry) {
    return what.starts_with(entry.what);
  });
  return known == std::end(kKnown) ? nullptr : known;
}

}  // namespace

std::size_t below(std::size_t bound) {
  return std::uniform_int_distribution<std::size_t>(0, bound - 1)(generator);
}

std::string randomText(const std::vector<std::string>& pieces, std::size_t longest) {
  std::string text;
  for (std::size_t count = below(longest + 1); count > 0; --count) text += anyOf(pieces);
  return text;
}

void compare(const std::string& what, const std::string& kind, const std::string& input,
             const std::string& ours, const std::string& theirs) {
  ++comparisons[what];
  if (ours == theirs) return;
  Difference& difference = differences[what + (kind.empty() ? "" : " [" + kind + "]")];
  if (difference.count++ == 0)
    difference.example = input + ": ours " + shown(ours) + ", Foundation " + shown(theirs);
}

void passOver(const std::string& why) {
  ++comparisons["(" + why + ")"];
}

bool tell() {
  int total = 0;
  for (const auto& [what, count] : comparisons) {
    std::printf("%7d %s\n", count, what.c_str());
    if (!what.starts_with('(')) total += count;
  }
  std::printf("%7d in all, %zu kinds of difference\n", total, differences.size());
  bool allKnown = true;
  for (const auto& [what, difference] : differences) {
    const Known* known = knownOf(what);
    allKnown = allKnown && known != nullptr;
    std::printf("%s %s: %d times; %s%s\n", known ? "known  " : "UNKNOWN", what.c_str(),
                difference.count, difference.example.c_str(),
                known ? ("  (" + std::string(known->why) + ")").c_str() : "");
  }
  return allKnown;
}

std::string shown(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    char code[8];
    std::snprintf(code, sizeof code, "\\x%02x", byte);
    result += c == '"' || c == '\\' || byte < 0x20 ? code : std::string(1, c);
  }
  return result + '"';
}

std::string tell(bool flag) {
  return flag ? "YES" : "NO";
}

NSString* objc(const std::string& text) {
  return [[[NSString alloc] initWithBytes:text.data()
                                   length:text.size()
                                 encoding:NSUTF8StringEncoding] autorelease];
}

std::string cpp(NSString* text) {
  if (text == nil) return "(nil)";
  NSData* data = [text dataUsingEncoding:NSUTF8StringEncoding];
  return {static_cast<const char*>(data.bytes), data.length};
}

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += part + '|';
  return text;
}

std::string joined(NSArray* parts) {
  std::string text;
  for (NSString* part in parts) text += cpp(part) + '|';
  return text;
}

std::vector<std::string> sorted(NSArray* names) {
  std::vector<std::string> result;
  for (NSString* name in names) result.push_back(cpp(name));
  std::sort(result.begin(), result.end());
  return result;
}

}  // namespace installer::judge
