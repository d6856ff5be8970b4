#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "ctl/Surroundings.h"
#include "ctl/trace/TraceWatch.h"

namespace installer::ctl {

// Watches a trace as it grows, and tells each step when the next one begins.
class Follower {
 public:
  explicit Follower(LineSource source) : _watch(std::move(source)) {}

  // Comes back when the run in it is over, or the answer can not be written any more. nullopt, with
  // `error` set, when the trace cannot be read. A trace that another one replaces is followed from
  // the new one's beginning.
  std::optional<Trace> follow(Surroundings& surroundings, FileError& error);

 private:
  bool open(FileError& error);
  void readOn();
  void tellSteps(Surroundings& surroundings, bool all);
  bool isOver() const;

  TraceWatch _watch;
  std::size_t _told = 0;  // of the run's steps
  int _idleLooks = 0;     // since the last line came
};

}  // namespace installer::ctl
