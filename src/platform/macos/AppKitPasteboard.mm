#import <AppKit/AppKit.h>

#include <string>

#include "platform/macos/AppKitPasteboard.h"

namespace installer {
namespace {

NSString* const kType = @"ERROR_MESSAGE";

NSPasteboard* pasteboard() {
  return [NSPasteboard pasteboardWithName:@"INSTALLATION_INTERNAL_PASTEBOARD"];
}

// The list as the platform's own objects, by way of its XML form; nil when there is none.
id objectsOf(const PropertyList::Dictionary& record) {
  const std::optional<std::string> text = PropertyList::serialize(record);
  if (!text) return nil;
  NSData* data = [NSData dataWithBytes:text->data() length:text->size()];
  return [NSPropertyListSerialization propertyListWithData:data
                                                   options:NSPropertyListImmutable
                                                    format:nullptr
                                                     error:nullptr];
}

NSData* bytesOf(id objects) {
  if (objects == nil) return nil;
  return [NSPropertyListSerialization dataWithPropertyList:objects
                                                    format:NSPropertyListXMLFormat_v1_0
                                                   options:0
                                                     error:nullptr];
}

}  // namespace

// Declaring the type clears what the pasteboard held.
void AppKitPasteboard::clear() {
  @autoreleasepool {
    [pasteboard() declareTypes:@[ kType ] owner:nil];
  }
}

void AppKitPasteboard::setRecord(const PropertyList::Dictionary& record) {
  @autoreleasepool {
    const id objects = objectsOf(record);
    if (objects != nil) [pasteboard() setPropertyList:objects forType:kType];
  }
}

std::optional<PropertyList::Dictionary> AppKitPasteboard::record() {
  @autoreleasepool {
    NSData* data = bytesOf([pasteboard() propertyListForType:kType]);
    if (data == nil) return std::nullopt;
    return PropertyList::parseDictionary(
        {static_cast<const char*>(data.bytes), std::size_t{data.length}});
  }
}

}  // namespace installer
