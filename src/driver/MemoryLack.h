#pragma once

#include <cstdio>

namespace installer {

// Of a run that has not the memory to begin, and no log to tell it to: a line on standard error.
inline void tellNoMemoryToBegin() {
  constexpr const char* kLine = "HotfixInstaller: There is not enough memory to begin.\n";
  (void)std::fputs(kLine, stderr);  // the status tells it too
}

}  // namespace installer
