#include "ctl/Output.h"

#include <cerrno>
#include <system_error>

#include "ctl/Shown.h"

namespace installer::ctl {

void Output::write(std::string_view text) {
  if (_failure) return;
  if (std::fwrite(text.data(), 1, text.size(), _stream) != text.size()) fail();
}

void Output::flush() {
  if (!_failure && std::fflush(_stream) != 0) fail();
}

void Output::fail() {
  _failure = std::generic_category().message(errno);
}

void complain(std::string_view text) {
  const std::string line = "hotfixctl: " + shown(text) + "\n";
  (void)std::fputs(line.c_str(), stderr);
}

}  // namespace installer::ctl
