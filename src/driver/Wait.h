#pragma once

#include <chrono>
#include <string_view>

namespace installer {

// One wait for somebody else to end, told in the log: in one notice when it begins and in another
// one when it has become long. There is no limit to it; whoever called us has one, and a signal.
class Wait {
 public:
  // What is said at the beginning, and the beginning of what is said later. Both must outlive it.
  Wait(std::string_view notice, std::string_view later) : _notice(notice), _later(later) {}

  // A pause before the next attempt. Throws Interrupted when a signal asks the process to end.
  void pause();

 private:
  const std::string_view _notice;
  const std::string_view _later;
  std::chrono::milliseconds _waited{0};
};

}  // namespace installer
