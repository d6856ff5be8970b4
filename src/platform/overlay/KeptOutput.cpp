#include "platform/overlay/KeptOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <utility>

#include "platform/posix/Uninterrupted.h"

namespace installer::overlay {

namespace {

constexpr std::size_t kBlock = 4096;  // bytes

std::string readAll(const Descriptor& pipe) {
  std::array<char, kBlock> block;
  std::string all;
  for (;;) {
    const ssize_t count =
        uninterrupted([&] { return ::read(pipe.get(), block.data(), block.size()); });
    if (count <= 0) return all;
    all.append(block.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace

// Nobody reads before the end: a full pipe must refuse and not wait.
KeptOutput::KeptOutput() {
  (void)std::fflush(stdout);  // what cannot be written stays where it is
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return;
  _kept = Descriptor(ends[0]);
  const Descriptor in(ends[1]);
  Descriptor usual(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
  if (!usual.valid() || ::fcntl(in.get(), F_SETFL, O_NONBLOCK) != 0) return;
  if (::dup2(in.get(), STDOUT_FILENO) != -1) _usual = std::move(usual);
}

std::string KeptOutput::take() {
  if (!_usual.valid()) return {};
  (void)std::fflush(stdout);                  // more than there is room for is lost
  (void)::dup2(_usual.get(), STDOUT_FILENO);  // both are open
  _usual = Descriptor();
  return readAll(_kept);
}

}  // namespace installer::overlay
