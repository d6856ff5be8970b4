#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace installer::test {

// Puts a file in place of one of this process's descriptors, and the old one back at the end.
class ScopedDescriptor {
 public:
  ScopedDescriptor(int descriptor, const std::string& path, int flags)
      : _descriptor(descriptor), _previous(fcntl(descriptor, F_DUPFD_CLOEXEC, 100)) {
    const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) throw std::runtime_error("cannot open " + path);
    close(file);
  }
  ScopedDescriptor(const ScopedDescriptor&) = delete;
  ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;
  ~ScopedDescriptor() {
    if (_previous < 0) {
      close(_descriptor);
      return;
    }
    dup2(_previous, _descriptor);
    close(_previous);
  }

 private:
  const int _descriptor;
  const int _previous;  // -1 when the descriptor was closed
};

}  // namespace installer::test
