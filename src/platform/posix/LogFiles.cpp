#include "platform/posix/LogFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "base/TraceLine.h"
#include "platform/Clock.h"
#include "platform/posix/OwnProcess.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {
namespace {

std::string hostName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "localhost";
  return name.data();
}

// A line that cannot be written is lost: there is nobody to tell.
void writeWhole(int descriptor, std::string_view line) {
  while (!line.empty()) {
    const ssize_t count =
        uninterrupted([&] { return ::write(descriptor, line.data(), line.size()); });
    if (count <= 0) return;
    line.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

// The first file finds its place without memory: what is lacking later can be told in it.
LogFiles::LogFiles(Clock& clock) : _clock(clock), _host(hostName()) {
  _descriptors.reserve(1);
}

int LogFiles::add(int descriptor) {
  if (fcntl(descriptor, F_GETFD) == -1) return -1;
  remove(descriptor);
  _descriptors.push_back(descriptor);
  return 0;
}

void LogFiles::remove(int descriptor) {
  std::erase(_descriptors, descriptor);
}

void LogFiles::write(LogLevel level, std::string_view message) const {
  LineText text;
  appendFormatted({_clock.localTime(), _host, ownProcess(), level, message}, text);
  for (const int descriptor : _descriptors) writeWhole(descriptor, viewOf(text));
}

}  // namespace installer
