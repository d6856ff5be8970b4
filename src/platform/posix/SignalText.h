#pragma once

#include <fmt/format.h>

#include <cstring>
#include <string>

namespace installer {

// The signal with the system's words: "signal 9 (Killed)".
inline std::string signalText(int signal) {
  return fmt::format("signal {} ({})", signal, ::strsignal(signal));
}

}  // namespace installer
