/* What our sources use of macOS's <sys/sysctl.h>: the start of a process, told from /proc. */
#pragma once
#include <stddef.h>
#include <sys/types.h>

#define CTL_KERN 1
#define KERN_PROCARGS2 49

#ifdef __cplusplus
extern "C" {
#endif
int sysctl(int* name, u_int length, void* old, size_t* oldSize, void* value, size_t size);
#ifdef __cplusplus
}
#endif
