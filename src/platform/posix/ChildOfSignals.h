#pragma once

#include <sys/types.h>

namespace installer {

// Names the running child to which the signals are passed on that ask this process to end, as long
// as the object lives. The child must not have been reaped before the object goes: its number could
// be another process's then. One at a time.
class ChildOfSignals {
 public:
  explicit ChildOfSignals(pid_t child);
  ChildOfSignals(const ChildOfSignals&) = delete;
  ChildOfSignals& operator=(const ChildOfSignals&) = delete;
  ~ChildOfSignals();
};

}  // namespace installer
