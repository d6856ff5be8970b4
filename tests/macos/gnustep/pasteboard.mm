// One step of the error record's way through the pasteboard, each in a process of its own:
//
//   pasteboard write CODE DETAIL...   by our own class
//   pasteboard clear                  the same
//   pasteboard read                   the same, as XML
//   pasteboard ui                     by NSPasteboard itself, as the graphical installer reads it
#import <AppKit/AppKit.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/Pasteboard.h"
#include "platform/Platform.h"

using namespace installer;

namespace {

Pasteboard& ours() {
  return *Platform::current().pasteboard;
}

void write(int code, int count, char** details) {
  PropertyList::Array texts;
  for (int index = 0; index < count; ++index) texts.emplace_back(std::string(details[index]));
  ours().setRecord({{"ERROR_CODE", code}, {"ERROR_DETAILS", std::move(texts)}});
}

int read() {
  const auto record = ours().record();
  if (!record) return std::puts("none"), 3;
  return std::fputs(PropertyList::serialize(*record)->c_str(), stdout), 0;
}

int readAsInterface() {
  @autoreleasepool {
    NSPasteboard* board = [NSPasteboard pasteboardWithName:@"INSTALLATION_INTERNAL_PASTEBOARD"];
    id record = [board propertyListForType:@"ERROR_MESSAGE"];
    if (![record isKindOfClass:[NSDictionary class]]) return std::puts("none"), 3;
    for (NSString* type in [board types]) std::printf("type=%s\n", [type UTF8String]);
    std::printf("ERROR_CODE=%d\n", [[record objectForKey:@"ERROR_CODE"] intValue]);
    for (NSString* detail in [record objectForKey:@"ERROR_DETAILS"])
      std::printf("ERROR_DETAILS=%s\n", [detail UTF8String]);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view step = argc > 1 ? argv[1] : "";
  if (step == "read") return read();
  if (step == "ui") return readAsInterface();
  if (step == "clear") return ours().clear(), 0;
  if (step == "write" && argc > 2) return write(std::atoi(argv[2]), argc - 3, argv + 3), 0;
  return 2;
}
