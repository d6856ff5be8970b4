#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace installer {

// Chooses temporary names. They cannot be guessed, so that nobody can keep us from a free one: a
// name is looked for in its folder only when the system has no random numbers to give.
class TemporaryNames {
 public:
  // Whether next() can have made the name, of whatever process.
  static bool canBeOne(std::string_view name);

  // A name that is not taken in the open folder. Changes nothing.
  std::string next(int folder);

 private:
  [[nodiscard]] bool draw();

  std::array<std::uint64_t, 32> _numbers{};
  std::size_t _left = 0;    // of them
  pid_t _drawnBy = 0;       // two processes must not use the same ones
  bool _mayBeMany = false;  // whether one was not enough
};

}  // namespace installer
