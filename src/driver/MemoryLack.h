#pragma once

#include <cstdio>

namespace installer {

inline constexpr const char* kNoMemoryToBegin = "There is not enough memory to begin.";
inline constexpr const char* kNoMemoryToGoOn =
    "There is not enough memory to go on. The installation ends here.";

// Of a run that has not the memory to begin or go on, and no trace to tell it to: a line on
// standard error, for which no memory is needed. The status tells it too.
inline void tellOfMemoryWithoutTrace(const char* line) {
  (void)std::fputs("HotfixInstaller: ", stderr);
  (void)std::fputs(line, stderr);
  (void)std::fputs("\n", stderr);
}

}  // namespace installer
