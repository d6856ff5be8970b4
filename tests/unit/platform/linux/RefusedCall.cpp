#include "unit/platform/linux/RefusedCall.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "support/ChildRun.h"

namespace installer::test {

bool refuseCall(long call, int error) {
  const auto answer = SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error);
  std::array<sock_filter, 4> steps{
      sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
      sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(call)},
      sock_filter{BPF_RET | BPF_K, 0, 0, answer},
      sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  };
  const sock_fprog program{static_cast<unsigned short>(steps.size()), steps.data()};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

bool canRefuseCalls() {
  return inChild([] { return refuseCall(SYS_getpgid, ENOSYS) && ::getpgid(0) < 0; });
}

}  // namespace installer::test
