#include "calls/Surroundings.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "calls/CallNames.h"

namespace installer::calls {

namespace {

// Every kernel that knows a call looks at its descriptor.
bool tellsBadDescriptor(long answer) {
  return answer == -1 && errno == EBADF;
}

bool knowsOpenBeneath() {
  open_how how{};
  return tellsBadDescriptor(syscall(SYS_openat2, -1, "name", &how, sizeof how));
}

bool knowsChangeModeAt() {
  return tellsBadDescriptor(syscall(kChangeModeAtCall, -1, "", 0, AT_EMPTY_PATH));
}

}  // namespace

std::string kernel() {
  utsname names{};
  uname(&names);
  const std::string release = names.release;
  const std::size_t minor = release.find('.') + 1;
  return std::string(names.sysname) + " " + release.substr(0, release.find_first_of(".-", minor));
}

std::string library() {
  std::array<char, 64> name{};
  const std::size_t size = confstr(_CS_GNU_LIBC_VERSION, name.data(), name.size());
  return size == 0 ? "unknown" : name.data();
}

std::optional<std::string> lackingCall() {
  if (!knowsOpenBeneath()) return "openat2";
  if (!knowsChangeModeAt()) return "fchmodat2";
  return std::nullopt;
}

}  // namespace installer::calls
