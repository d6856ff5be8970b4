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

namespace {

std::uint32_t answer(int error) {
  return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error);
}

template <std::size_t count>
bool install(std::array<sock_filter, count> steps) {
  const sock_fprog program{static_cast<unsigned short>(count), steps.data()};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace

bool refuseCall(long call, int error) {
  return install(std::array{
      sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
      sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(call)},
      sock_filter{BPF_RET | BPF_K, 0, 0, answer(error)},
      sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  });
}

// The lower half of an argument comes first in memory here.
bool refuseCallWith(long call, unsigned argument, std::uint32_t value, int error) {
  const auto place = static_cast<std::uint32_t>(offsetof(seccomp_data, args) + 8 * argument);
  return install(std::array{
      sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
      sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 3, static_cast<std::uint32_t>(call)},
      sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, place},
      sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 1, value},
      sock_filter{BPF_RET | BPF_K, 0, 0, answer(error)},
      sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  });
}

bool canRefuseCalls() {
  return inChild([] { return refuseCall(SYS_getpgid, ENOSYS) && ::getpgid(0) < 0; });
}

}  // namespace installer::test
