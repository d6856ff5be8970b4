/* Apple's system log for a system without one: lines go nowhere, and the files that mirror them are
   written by our sources themselves. */
#pragma once
#ifdef __cplusplus
extern "C" {
#endif
typedef struct __asl_object_s* asl_object_t;

static inline __attribute__((format(printf, 4, 5))) int asl_log(asl_object_t client,
                                                                asl_object_t message, int level,
                                                                const char* format, ...) {
  (void)client, (void)message, (void)level, (void)format;
  return 0;
}
#ifdef __cplusplus
}
#endif
