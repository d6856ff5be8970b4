#include "calls/CallNames.h"

#include <sys/syscall.h>

#include <map>
#include <set>

namespace installer::calls {

namespace {

#define NAMED(name) \
  { SYS_##name, #name }

const std::map<long, std::string>& names() {
  static const std::map<long, std::string> all{
      NAMED(access),
      NAMED(alarm),
      NAMED(bind),
      NAMED(brk),
      NAMED(capget),
      NAMED(capset),
      NAMED(chdir),
      NAMED(chmod),
      NAMED(chown),
      NAMED(clock_gettime),
      NAMED(clock_nanosleep),
      NAMED(clone),
      NAMED(clone3),
      NAMED(close),
      NAMED(close_range),
      NAMED(connect),
      NAMED(copy_file_range),
      NAMED(creat),
      NAMED(dup),
      NAMED(dup2),
      NAMED(dup3),
      NAMED(execve),
      NAMED(exit),
      NAMED(exit_group),
      NAMED(faccessat),
      NAMED(faccessat2),
      NAMED(fadvise64),
      NAMED(fallocate),
      NAMED(fchdir),
      NAMED(fchmod),
      NAMED(fchmodat),
      NAMED(fchown),
      NAMED(fchownat),
      NAMED(fcntl),
      NAMED(fdatasync),
      NAMED(fgetxattr),
      NAMED(flock),
      NAMED(fork),
      NAMED(fsetxattr),
      NAMED(fstat),
      NAMED(fstatfs),
      NAMED(fsync),
      NAMED(ftruncate),
      NAMED(futex),
      NAMED(getcwd),
      NAMED(getdents64),
      NAMED(getegid),
      NAMED(geteuid),
      NAMED(getgid),
      NAMED(getgroups),
      NAMED(getpid),
      NAMED(getppid),
      NAMED(getrandom),
      NAMED(getresuid),
      NAMED(getrlimit),
      NAMED(getrusage),
      NAMED(getsockname),
      NAMED(gettid),
      NAMED(getuid),
      NAMED(getxattr),
      NAMED(ioctl),
      NAMED(kill),
      NAMED(lchown),
      NAMED(lgetxattr),
      NAMED(link),
      NAMED(linkat),
      NAMED(lseek),
      NAMED(lstat),
      NAMED(madvise),
      NAMED(membarrier),
      NAMED(mkdir),
      NAMED(mkdirat),
      NAMED(mmap),
      NAMED(mprotect),
      NAMED(mremap),
      NAMED(munmap),
      NAMED(nanosleep),
      NAMED(newfstatat),
      NAMED(open),
      NAMED(openat),
      NAMED(openat2),
      NAMED(pipe),
      NAMED(pipe2),
      NAMED(poll),
      NAMED(ppoll),
      NAMED(prctl),
      NAMED(pread64),
      NAMED(prlimit64),
      NAMED(pwrite64),
      NAMED(read),
      NAMED(readlink),
      NAMED(readlinkat),
      NAMED(readv),
      NAMED(recvfrom),
      NAMED(recvmsg),
      NAMED(rename),
      NAMED(renameat),
      NAMED(renameat2),
      NAMED(rmdir),
      NAMED(rseq),
      NAMED(rt_sigaction),
      NAMED(rt_sigprocmask),
      NAMED(rt_sigreturn),
      NAMED(sched_yield),
      NAMED(sendfile),
      NAMED(sendmmsg),
      NAMED(sendmsg),
      NAMED(sendto),
      NAMED(setfsuid),
      NAMED(setresgid),
      NAMED(setresuid),
      NAMED(setrlimit),
      NAMED(setuid),
      NAMED(sigaltstack),
      NAMED(socket),
      NAMED(stat),
      NAMED(statfs),
      NAMED(statx),
      NAMED(symlink),
      NAMED(symlinkat),
      NAMED(sync),
      NAMED(sync_file_range),
      NAMED(syncfs),
      NAMED(sysinfo),
      NAMED(truncate),
      NAMED(umask),
      NAMED(uname),
      NAMED(unlink),
      NAMED(unlinkat),
      NAMED(utimensat),
      NAMED(vfork),
      NAMED(wait4),
      NAMED(waitid),
      NAMED(write),
      NAMED(writev),
      {kChangeModeAtCall, "fchmodat2"},
  };
  return all;
}

#undef NAMED

}  // namespace

std::string nameOfCall(long number) {
  const auto found = names().find(number);
  return found == names().end() ? "call " + std::to_string(number) : found->second;
}

bool isLibrarys(long number) {
  static const std::set<long> all{SYS_brk,     SYS_mmap,     SYS_mremap, SYS_munmap,
                                  SYS_madvise, SYS_mprotect, SYS_futex};
  return all.contains(number);
}

}  // namespace installer::calls
