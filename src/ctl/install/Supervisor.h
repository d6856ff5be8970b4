#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string>

#include "ctl/install/Progress.h"
#include "ctl/install/Result.h"
#include "ctl/trace/TraceWatch.h"
#include "platform/WatchedChild.h"

namespace installer::ctl::install {

struct TimeLimits {
  std::optional<std::chrono::seconds> run;  // nullopt for as long as it takes
  std::chrono::seconds grace{30};           // between asking and killing
};

// Watches over an installer that runs: its time, and its progress, which its trace tells.
class Supervisor {
 public:
  // `planned`: when the run was; an older trace is another run's.
  Supervisor(WatchedChild& child, const TimeLimits& limits, Progress& progress,
             std::time_t planned);

  // Comes back when it has ended.
  WatchedEnd watch();

  std::chrono::milliseconds time() const { return _time; }
  // nullopt when nobody wanted its end.
  std::optional<Interruption> interruption() const;

 private:
  void heedTime();
  void lookAtTrace();
  bool belongsToChild() const;

  WatchedChild& _child;
  const TimeLimits _limits;
  Progress& _progress;
  TraceWatch _trace;
  const std::time_t _planned;
  const std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
  std::chrono::milliseconds _time{0};
  std::optional<std::chrono::milliseconds> _askedAt;
  bool _isKilled = false;
  bool _isOpen = false;  // the trace, and it is the child's
};

}  // namespace installer::ctl::install
