/* What our sources use of macOS's <asl.h>, which no free SDK has. The function is in libSystem. As
   documented: since macOS 10.4, deprecated in 10.12 in favour of os_log(3). */
#pragma once
#include <os/availability.h>
#include <sys/cdefs.h>

typedef struct __asl_object_s* asl_object_t;

__BEGIN_DECLS
int asl_log(asl_object_t client, asl_object_t message, int level, const char* format, ...)
    __printflike(4, 5) __attribute__((availability(macos, introduced = 10.4, deprecated = 10.12,
                                                   message = "os_log(3) has replaced asl(3)")));
__END_DECLS
