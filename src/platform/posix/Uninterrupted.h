#pragma once

#include <cerrno>

namespace installer {

// The result of a system call that answers -1 for a failure, made again for as long as a signal
// cuts it short.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

}  // namespace installer
