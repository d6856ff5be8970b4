#include "ctl/explain/Follower.h"

#include <chrono>

#include "ctl/explain/RunText.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

// Between two looks: short for who watches, long beside a look.
constexpr std::chrono::milliseconds kPause{200};
constexpr int kLongIdle = 10;

}  // namespace

std::optional<Trace> Follower::follow(Surroundings& surroundings, FileError& error) {
  if (!open(error)) return std::nullopt;
  while (true) {
    // Asked before the last look, so that nothing is missed that was written before the end.
    const bool isLast = isOver();
    readOn();
    tellSteps(surroundings, isLast);
    surroundings.out.flush();
    if (isLast || surroundings.out.failure() || _watch.readError()) break;
    Platform::current().clock->pause(kPause);
    if (_watch.isReplaced() && !open(error)) return std::nullopt;
  }
  if (_watch.readError()) error = *_watch.readError();
  if (_watch.readError()) return std::nullopt;
  return _watch.trace();
}

bool Follower::open(FileError& error) {
  if (!_watch.open(error)) return false;
  _told = 0;
  _idleLooks = 0;
  return true;
}

void Follower::readOn() {
  ++_idleLooks;
  if (_watch.readOn()) _idleLooks = 0;
}

// The last step is not over before the run is.
void Follower::tellSteps(Surroundings& surroundings, bool all) {
  const std::optional<Run> run = _watch.run();
  if (!run || surroundings.json) return;
  const std::size_t ended = all ? run->steps.size() : run->steps.size() - 1;
  if (_told > ended) _told = 0;  // another run has begun
  for (; _told < ended; ++_told)
    surroundings.out.write(lineOf(run->steps[_told], surroundings.style));
}

// A file without a run is no trace when nothing has come for long.
bool Follower::isOver() const {
  const std::optional<Run> run = _watch.run();
  return run ? !isAtWork(*run) : _idleLooks >= kLongIdle;
}

}  // namespace installer::ctl
