#include "platform/posix/LogFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "base/TraceLine.h"
#include "platform/Clock.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {
namespace {

std::string hostName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "localhost";
  return name.data();
}

void writeOnce(int descriptor, std::string_view line) {
  const auto write = [&] { return ::write(descriptor, line.data(), line.size()); };
  (void)uninterrupted(write);  // a line that can not be written is lost: there is nobody to tell
}

}  // namespace

LogFiles::LogFiles(Clock& clock) : _clock(clock), _host(hostName()) {}

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
  appendFormatted({_clock.localTime(), _host, getpid(), level, message}, text);
  for (const int descriptor : _descriptors) writeOnce(descriptor, viewOf(text));
}

}  // namespace installer
