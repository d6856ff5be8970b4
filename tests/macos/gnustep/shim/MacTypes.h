/* What our declarations of CoreFoundation use of macOS's <MacTypes.h>. */
#pragma once
#include <stdint.h>

typedef uint8_t UInt8;
typedef uint32_t UInt32;
