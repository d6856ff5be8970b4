#include "platform/Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace installer {

bool inputIsTerminal() {
  return isatty(STDIN_FILENO) == 1;
}

bool outputIsTerminal() {
  return isatty(STDOUT_FILENO) == 1;
}

std::optional<std::size_t> terminalColumns() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

}  // namespace installer
