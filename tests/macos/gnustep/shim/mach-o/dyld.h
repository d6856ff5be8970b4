/* What our tests use of macOS's <mach-o/dyld.h>, told from /proc. */
#pragma once
#include <stdint.h>
#ifdef __cplusplus
extern "C" {
#endif
/* 0 when the path of the executable has room in the buffer. */
int _NSGetExecutablePath(char* buffer, uint32_t* size);
#ifdef __cplusplus
}
#endif
