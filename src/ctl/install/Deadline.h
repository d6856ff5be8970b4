#pragma once

#include <chrono>

namespace installer::ctl::install {

// How long this process may wait for others, from now on.
class Deadline {
 public:
  explicit Deadline(std::chrono::seconds wait) : _end(std::chrono::steady_clock::now() + wait) {}

  // Waits a moment; false, at once, when the time is over. A signal that asks this process to end
  // ends the wait with Interrupted.
  [[nodiscard]] bool allowsAnotherTry() const;

 private:
  const std::chrono::steady_clock::time_point _end;
};

}  // namespace installer::ctl::install
