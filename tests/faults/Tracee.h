#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "faults/Calls.h"

struct user_regs_struct;

namespace installer::faults {

// How the program is started: below a root folder that is the whole world to it.
struct Start {
  std::string root;
  std::string program;  // as the program sees it
  std::vector<std::string> arguments;
  std::map<std::string, std::string> environment;
};

// How a started program ended.
struct End {
  bool late = false;  // had to be killed, for it did not end by itself
  int status = -1;    // exit status; meaningless for one that was ended by a signal
  int signal = 0;     // 0 for one that ended by itself
};

// The program, followed from the first instruction of its main(): it is stopped at each of its
// counted calls. Its children run free.
class Tracee {
 public:
  // The distance is that of main() from the entry point of the program.
  Tracee(const Start& start, std::uint64_t distanceOfMain);
  Tracee(const Tracee&) = delete;
  Tracee& operator=(const Tracee&) = delete;
  ~Tracee();

  // Lets the program make the call that it is stopped at, and stops it at its next one. Nothing
  // when it has ended.
  std::optional<Call> next();

  // The same for all calls, also those that are not counted otherwise: the call's number.
  std::optional<long> nextOfAll();

  // What becomes of the call at which the program is stopped.
  void fail(int error);            // it is not made and answers that
  void shorten(const Call& call);  // half of the bytes
  void kill();                     // never made; the program is dead

  // From here on the program runs without a stop to its end, which next() waits for.
  void letGo() { _isFree = true; }

  // The call with its paths as the program sees them, for people.
  std::string described(const Call& call) const;
  // The target of the program's descriptor as the program sees it; "" for none.
  std::string descriptorPath(std::uint64_t descriptor) const;
  std::string pathOf(const Call& call) const;       // what the call is made on; "" for nothing
  std::string otherPathOf(const Call& call) const;  // the new name

  const End& end() const { return _end; }
  pid_t process() const { return _process; }

 private:
  void runToMain(std::uint64_t distance);
  std::uint64_t entryPoint() const;
  bool resume(int request);
  void settle();
  void ended(int status);
  std::string textAt(std::uint64_t address) const;
  std::uint64_t numberAt(std::uint64_t address) const;
  std::string pathAt(const Call& call, int folder, int path) const;

  std::string _root;
  pid_t _process = -1;
  bool _running = true;
  bool _isFree = false;
  bool _inCall = false;        // stopped at the beginning of a call
  std::optional<int> _answer;  // what the call is to answer instead of its own result
  End _end;
};

// The distance of the function main from the entry point of an executable, as its symbols tell it.
// Nothing when it has none, or is no executable of this system.
std::optional<std::uint64_t> distanceOfMain(const std::string& program);

// Why programs can not be followed on this machine; nothing when they can.
std::optional<std::string> followingRefused();

}  // namespace installer::faults
