// The few functions of CoreFoundation that our sources and tests call, on top of GNUstep's
// Foundation: the objects are Foundation's own, as they are on macOS. Debian has no package of
// GNUstep's CoreFoundation.
#import <Foundation/Foundation.h>

#include "CoreFoundation/CoreFoundation.h"

namespace {

template <class Reference>
Reference bridged(id object) {
  return reinterpret_cast<Reference>(object);
}

template <class Object = id>
Object bridged(CFTypeRef reference) {
  return static_cast<Object>(reinterpret_cast<id>(const_cast<void*>(reference)));
}

NSString* domainNamed(CFStringRef application) {
  return application == kCFPreferencesAnyApplication ? NSGlobalDomain
                                                     : bridged<NSString*>(application);
}

// Read from the disk at each call, for the user that the process is at that moment: what macOS's
// preferences server answers.
NSUserDefaults* defaults() {
  [NSUserDefaults resetStandardUserDefaults];
  return [NSUserDefaults standardUserDefaults];
}

}  // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFArrayCallBacks kCFTypeArrayCallBacks = {};
const CFStringRef kCFPreferencesAnyApplication = bridged<CFStringRef>(@"any application");
const CFStringRef kCFPreferencesAnyHost = bridged<CFStringRef>(@"any host");
const CFStringRef kCFPreferencesCurrentHost = bridged<CFStringRef>(@"current host");
const CFStringRef kCFPreferencesAnyUser = bridged<CFStringRef>(@"any user");
const CFStringRef kCFPreferencesCurrentUser = bridged<CFStringRef>(@"current user");

CFTypeRef CFRetain(CFTypeRef object) {
  return bridged<CFTypeRef>([bridged(object) retain]);
}

void CFRelease(CFTypeRef object) {
  [bridged(object) release];
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding, unsigned char) {
  return bridged<CFStringRef>([[NSString alloc] initWithBytes:bytes
                                                       length:static_cast<NSUInteger>(length)
                                                     encoding:NSUTF8StringEncoding]);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding) {
  return bridged<CFStringRef>([[NSString alloc] initWithUTF8String:text]);
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
  return bridged<CFDataRef>([[NSData alloc] initWithBytes:bytes
                                                   length:static_cast<NSUInteger>(length)]);
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
  return static_cast<const UInt8*>([bridged<NSData*>(data) bytes]);
}

CFIndex CFDataGetLength(CFDataRef data) {
  return static_cast<CFIndex>([bridged<NSData*>(data) length]);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks*) {
  return reinterpret_cast<CFMutableArrayRef>([NSMutableArray new]);
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
  [bridged<NSMutableArray*>(array) addObject:bridged(value)];
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  return static_cast<CFIndex>([bridged<NSDictionary*>(dictionary) count]);
}

CFDataRef CFPropertyListCreateData(CFAllocatorRef, CFPropertyListRef list,
                                   CFPropertyListFormat format, CFOptionFlags, CFErrorRef*) {
  const auto wanted = format == kCFPropertyListXMLFormat_v1_0 ? NSPropertyListXMLFormat_v1_0
                                                              : NSPropertyListBinaryFormat_v1_0;
  NSData* data = [NSPropertyListSerialization dataWithPropertyList:bridged(list)
                                                            format:wanted
                                                           options:0
                                                             error:nullptr];
  return bridged<CFDataRef>([data retain]);
}

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef, CFDataRef data, CFOptionFlags,
                                               CFPropertyListFormat*, CFErrorRef*) {
  id list = [NSPropertyListSerialization propertyListWithData:bridged<NSData*>(data)
                                                      options:NSPropertyListImmutable
                                                       format:nullptr
                                                        error:nullptr];
  return bridged<CFPropertyListRef>([list retain]);
}

CFDictionaryRef CFPreferencesCopyMultiple(CFArrayRef, CFStringRef application, CFStringRef,
                                          CFStringRef) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSDictionary* domain =
      [[defaults() persistentDomainForName:domainNamed(application)] retain];
  [pool drain];
  return bridged<CFDictionaryRef>(domain != nil ? domain : [NSDictionary new]);
}

void CFPreferencesSetMultiple(CFDictionaryRef set, CFArrayRef removed, CFStringRef application,
                              CFStringRef, CFStringRef) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSUserDefaults* store = defaults();
  NSString* name = domainNamed(application);
  NSMutableDictionary* values = [NSMutableDictionary dictionary];
  [values addEntriesFromDictionary:[store persistentDomainForName:name]];
  if (removed != nullptr) [values removeObjectsForKeys:bridged<NSArray*>(removed)];
  if (set != nullptr) [values addEntriesFromDictionary:bridged<NSDictionary*>(set)];
  if ([values count] > 0) {
    [store setPersistentDomain:values forName:name];
  } else {
    [store removePersistentDomainForName:name];
  }
  [store synchronize];
  [pool drain];
}

unsigned char CFPreferencesSynchronize(CFStringRef, CFStringRef, CFStringRef) {
  return [[NSUserDefaults standardUserDefaults] synchronize];
}
