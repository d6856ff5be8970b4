/* What our sources use of Foundation; signatures as Apple documents them. */
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <objc/NSObject.h>

@class NSError, NSString;

@interface NSString : NSObject
@end
@interface NSSimpleCString : NSString
@end
@interface NSConstantString : NSSimpleCString
@end

@interface NSArray : NSObject
+ (instancetype)arrayWithObjects:(const id[])objects count:(NSUInteger)count;
@end

__attribute__((__objc_exception__))
@interface NSException : NSObject
@end

@interface NSData : NSObject
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes;
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length;
@end

typedef NSUInteger NSPropertyListReadOptions;
typedef NSUInteger NSPropertyListWriteOptions;
enum { NSPropertyListImmutable = 0 };
typedef enum : NSUInteger {
  NSPropertyListOpenStepFormat = 1,
  NSPropertyListXMLFormat_v1_0 = 100,
  NSPropertyListBinaryFormat_v1_0 = 200
} NSPropertyListFormat;

@interface NSPropertyListSerialization : NSObject
+ (id)propertyListWithData:(NSData*)data
                   options:(NSPropertyListReadOptions)options
                    format:(NSPropertyListFormat*)format
                     error:(NSError**)error;
+ (NSData*)dataWithPropertyList:(id)list
                         format:(NSPropertyListFormat)format
                        options:(NSPropertyListWriteOptions)options
                          error:(NSError**)error;
@end
