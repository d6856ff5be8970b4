// Property lists in both directions: Foundation reads ours, and we read Foundation's.

#import "Judge.h"

#include <cmath>
#include <cstdint>

#include "hotfix/base/PropertyList.h"

namespace installer::judge {

namespace {

PropertyList::Value randomValue(int depth) {
  static const std::vector<std::string> texts = {"", " ", "a", "<&>\"'", "\xc3\x9c", "\xf0\x9f\x98\x80",
                                                 "line\nfeed", "cr\rlf\r\n", "\ttab", "]]>", "${x}"};
  switch (below(depth > 0 ? 8 : 6)) {
    case 0: return anyOf(texts);
    case 1: return below(2) == 0;
    case 2: return static_cast<std::int64_t>(generator());
    case 3: return std::ldexp(static_cast<double>(static_cast<std::int64_t>(generator())),
                              static_cast<int>(below(200)) - 100);
    case 4: return PropertyList::Data{randomText({std::string(1, '\0'), "\xff", "a", "base64"}, 20)};
    case 5: return PropertyList::Date{std::floor((static_cast<double>(below(4000000)) - 2000000) * 1000)};
    case 6: {
      PropertyList::Array array;
      for (std::size_t count = below(4); count > 0; --count) array.push_back(randomValue(depth - 1));
      return array;
    }
    default: {
      PropertyList::Dictionary dictionary;
      for (std::size_t count = below(4); count > 0; --count)
        dictionary.set(anyOf(texts), randomValue(depth - 1));
      return dictionary;
    }
  }
}

const char* typeOf(const PropertyList::Value& value) {
  static constexpr const char* names[] = {"text", "boolean", "integer", "unsigned", "real",
                                          "data", "date",    "uid",     "array",    "dictionary"};
  return names[value.storage().index()];
}

// The value as Foundation's object, made without any text form.
id objectOf(const PropertyList::Value& value) {
  using namespace PropertyList;
  if (const auto* text = value.as<std::string>()) return objc(*text);
  if (const auto* flag = value.as<bool>()) return [NSNumber numberWithBool:*flag];
  if (const auto* number = value.as<std::int64_t>()) return [NSNumber numberWithLongLong:*number];
  if (const auto* real = value.as<double>()) return [NSNumber numberWithDouble:*real];
  if (const auto* data = value.as<Data>())
    return [NSData dataWithBytes:data->bytes.data() length:data->bytes.size()];
  if (const auto* date = value.as<Date>())
    return [NSDate dateWithTimeIntervalSinceReferenceDate:date->seconds];
  if (const auto* array = value.as<Array>()) {
    NSMutableArray* objects = [NSMutableArray array];
    for (const Value& item : *array) [objects addObject:objectOf(item)];
    return objects;
  }
  NSMutableDictionary* objects = [NSMutableDictionary dictionary];
  for (const auto& [key, item] : *value.as<Dictionary>())
    [objects setObject:objectOf(item) forKey:objc(key)];
  return objects;
}

// nil for bytes that are no list, and for no bytes.
id readByFoundation(NSData* bytes) {
  if (bytes == nil) return nil;
  return [NSPropertyListSerialization propertyListWithData:bytes
                                                   options:NSPropertyListImmutable
                                                    format:nullptr
                                                     error:nullptr];
}

NSData* writtenByFoundation(const PropertyList::Value& value, NSPropertyListFormat format) {
  return [NSPropertyListSerialization dataWithPropertyList:objectOf(value)
                                                    format:format
                                                   options:0
                                                     error:nullptr];
}

void judgeOurs(const PropertyList::Value& value) {
  const std::string text = PropertyList::serialize(value).value_or("(none)");
  id read = readByFoundation([NSData dataWithBytes:text.data() length:text.size()]);
  const bool isSame = read != nil && [read isEqual:objectOf(value)];
  compare("Foundation reads our XML list", typeOf(value), shown(text), "same",
          isSame ? "same" : cpp([read description]));
}

void judgeTheirs(const PropertyList::Value& value, NSPropertyListFormat format) {
  NSData* bytes = writtenByFoundation(value, format);
  if (![readByFoundation(bytes) isEqual:objectOf(value)])
    return passOver("lists that Foundation's own reader takes for something else");
  const bool isXml = format == NSPropertyListXMLFormat_v1_0;
  const std::string text(static_cast<const char*>(bytes.bytes), bytes.length);
  const auto read = PropertyList::parse(text);
  const bool isSame = read && [objectOf(*read) isEqual:objectOf(value)];
  const bool hasReturn = isXml && text.find('\r') != text.npos;
  compare(isXml ? "we read Foundation's XML list" : "we read Foundation's binary list",
          (hasReturn ? "carriage return, " : "") + std::string(typeOf(value)),
          isXml ? shown(text) : "(binary)",
          isSame ? "same" : read ? "another value" : "unreadable", "same");
}

}  // namespace

void judgePropertyList() {
  const PropertyList::Value value = randomValue(3);
  judgeOurs(value);
  judgeTheirs(value, NSPropertyListXMLFormat_v1_0);
  judgeTheirs(value, NSPropertyListBinaryFormat_v1_0);
}

}  // namespace installer::judge
