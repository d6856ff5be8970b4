#include "ctl/install/Supervisor.h"

#include "platform/Clock.h"
#include "platform/Interruption.h"
#include "platform/Platform.h"

namespace installer::ctl::install {

namespace {

// Between two looks: short beside a run, long beside a look.
constexpr std::chrono::milliseconds kPause{20};

}  // namespace

Supervisor::Supervisor(WatchedChild& child, const TimeLimits& limits, Progress& progress,
                       std::time_t planned)
    : _child(child), _limits(limits), _progress(progress), _trace(lastTrace()), _planned(planned) {}

WatchedEnd Supervisor::watch() {
  while (true) {
    const std::optional<WatchedEnd> end = _child.end();
    _time = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                  _start);
    if (_progress.isWanted()) lookAtTrace();
    if (end) return *end;
    heedTime();
    Platform::current().clock->pause(kPause);
  }
}

void Supervisor::heedTime() {
  if (!_limits.run || _isKilled) return;
  if (!_askedAt) {
    if (_time < *_limits.run) return;
    _askedAt = _time;
    return _child.ask();
  }
  if (_time - *_askedAt < _limits.grace) return;
  _isKilled = true;
  _child.kill();
}

// What stands there at first is the trace of the run before, which the installer empties. Only once
// it is the child's own its place in it is kept.
void Supervisor::lookAtTrace() {
  FileError error;
  if (!_isOpen && (!_trace.open(error) || _trace.modified() < _planned)) return;
  _trace.readSome();  // what has not come yet comes later
  _isOpen = belongsToChild();
  if (_isOpen)
    _progress.show(*_trace.run(), std::chrono::duration_cast<std::chrono::seconds>(_time));
}

bool Supervisor::belongsToChild() const {
  const std::optional<Run> run = _trace.run();
  return run && run->process == _child.process();
}

std::optional<Interruption> Supervisor::interruption() const {
  Interruption found{notedInterruption(), _askedAt.has_value(), _isKilled};
  if (!found.signal && !found.timeLimit) return std::nullopt;
  return found;
}

}  // namespace installer::ctl::install
