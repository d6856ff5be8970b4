#import <AppKit/AppKit.h>

#include <string>
#include <utility>

#include "platform/Log.h"
#include "platform/macos/AppKitPasteboard.h"

namespace installer {
namespace {

NSString* const kType = @"ERROR_MESSAGE";

NSPasteboard* pasteboard() {
  return [NSPasteboard pasteboardWithName:@"INSTALLATION_INTERNAL_PASTEBOARD"];
}

// What the server answers; nothing (0, NO, nil) when it cannot be reached, of which an exception
// may tell.
template <class Ask>
auto askServer(Ask ask) -> decltype(ask(pasteboard())) {
  @try {
    return ask(pasteboard());
  } @catch (NSException*) {
    return {};
  }
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

// Declaring the type clears what the pasteboard held. The answer counts its changes.
void AppKitPasteboard::clear() {
  @autoreleasepool {
    heed(askServer([](NSPasteboard* board) {
           return [board declareTypes:@[ kType ] owner:nil];
         }) > 0);
  }
  _file.clear();
}

void AppKitPasteboard::setRecord(const PropertyList::Dictionary& record) {
  @autoreleasepool {
    const id objects = objectsOf(record);
    if (objects != nil)
      heed(askServer([objects](NSPasteboard* board) {
        return [board setPropertyList:objects forType:kType];
      }));
  }
  _file.setRecord(record);
}

// A board that has refused a record may hold an older one.
std::optional<PropertyList::Dictionary> AppKitPasteboard::record() {
  if (_isRefusalTold) return _file.record();
  @autoreleasepool {
    NSData* data = bytesOf(askServer([](NSPasteboard* board) {
      return [board propertyListForType:kType];
    }));
    if (data == nil) return _file.record();
    return PropertyList::parseDictionary(
        {static_cast<const char*>(data.bytes), std::size_t{data.length}});
  }
}

void AppKitPasteboard::heed(bool wasTaken) {
  if (wasTaken || std::exchange(_isRefusalTold, true)) return;
  log(LogLevel::warning, "The pasteboard does not take the error record: it is in its file alone.");
}

}  // namespace installer
