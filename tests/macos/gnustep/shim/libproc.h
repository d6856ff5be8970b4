/* What our sources use of macOS's <libproc.h> and <sys/proc_info.h>, told from /proc. */
#pragma once
#include <stdint.h>
#include <sys/types.h>

#define PROC_PIDPATHINFO_MAXSIZE 4096
#define PROC_PIDT_SHORTBSDINFO 13

struct proc_bsdshortinfo {
  uid_t pbsi_uid;
};

#ifdef __cplusplus
extern "C" {
#endif
/* The number of processes; with a buffer, the number of process numbers written. */
int proc_listallpids(void* buffer, int size);
/* The length of the executable's path; 0 where the system does not tell it. */
int proc_pidpath(int process, void* buffer, uint32_t size);
/* The size of what was written, which is what was asked for; 0 where the system does not tell. */
int proc_pidinfo(int process, int flavor, uint64_t argument, void* buffer, int size);
#ifdef __cplusplus
}
#endif
