// The contract suites, with a pool for the objects that GNUstep makes outside of ours.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  const int status = RUN_ALL_TESTS();
  [pool drain];
  return status;
}
