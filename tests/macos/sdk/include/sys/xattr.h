/* What our sources use of macOS's <sys/xattr.h>, which zig does not bring. The function is in
   libSystem, since macOS 10.4. */
#pragma once
#include <sys/cdefs.h>

__BEGIN_DECLS
int fremovexattr(int file, const char* name, int options);
__END_DECLS
