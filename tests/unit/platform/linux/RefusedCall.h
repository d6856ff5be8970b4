#pragma once

#include <cstdint>

namespace installer::test {

// From now on the kernel answers this system call of this process with the error number, as an
// older kernel or another file system would. For forked children only: it cannot be undone. False
// when the kernel cannot do that.
bool refuseCall(long call, int error);
// The same for calls with this value in the argument, counted from 0, alone.
bool refuseCallWith(long call, unsigned argument, std::uint32_t value, int error);

// Whether the kernel can.
bool canRefuseCalls();

}  // namespace installer::test
