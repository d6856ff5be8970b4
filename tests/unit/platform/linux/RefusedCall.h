#pragma once

namespace installer::test {

// From now on the kernel answers this system call of this process with the error number, as an
// older kernel or another file system would. For forked children only: it cannot be undone. False
// when the kernel cannot do that.
bool refuseCall(long call, int error);

// Whether the kernel can.
bool canRefuseCalls();

}  // namespace installer::test
