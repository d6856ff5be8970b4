#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "faults/World.h"

namespace installer::faults {

// What the process of an attacker is told to do. Paths are the program's.
struct Assault {
  // Names at which something is exchanged, as they are now; what lies at one may come and go.
  std::function<std::vector<std::string>()> places;
  // Makes something at the path that leads to what is guarded.
  std::function<void(const std::string& path)> makeBait;
};

// A process of the console user, with no rights but theirs, that exchanges what lies at a name with
// a bait beside it, in a tight loop until it is stopped or this object goes.
class Attacker {
 public:
  // Returns when the first exchange has been tried.
  Attacker(const World& world, const Assault& assault);
  Attacker(const Attacker&) = delete;
  Attacker& operator=(const Attacker&) = delete;
  ~Attacker();

  // How often something changed its place so far.
  std::uint64_t exchanges() const;
  // Whether it was at work until now.
  bool stop();

 private:
  struct Shared;

  [[noreturn]] void attack(const std::string& root, const Assault& assault);

  Shared* _shared;
  pid_t _process = -1;
};

}  // namespace installer::faults
