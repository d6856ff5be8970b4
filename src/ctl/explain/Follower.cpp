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
    if (isLast || surroundings.out.failure() || _file->readError()) break;
    Platform::current().clock->pause(kPause);
    if (_file->isReplaced() && !open(error)) return std::nullopt;
  }
  if (_file->readError()) error = *_file->readError();
  if (_file->readError()) return std::nullopt;
  return Trace{_path, _file->modified(), _reader->lines(), _reader->otherLines(), _reader->run()};
}

bool Follower::open(FileError& error) {
  std::unique_ptr<LineFile> file = openLineFile(_path, _link, error);
  if (!file) return false;
  _file = std::move(file);
  _reader.emplace(yearOf(_file->modified()));
  _told = 0;
  _idleLooks = 0;
  return true;
}

void Follower::readOn() {
  ++_idleLooks;
  while (const auto line = _file->next()) {
    _reader->add(*line);
    _idleLooks = 0;
  }
}

// The last step is not over before the run is.
void Follower::tellSteps(Surroundings& surroundings, bool all) {
  const std::optional<Run> run = _reader->run();
  if (!run || surroundings.json) return;
  const std::size_t ended = all ? run->steps.size() : run->steps.size() - 1;
  if (_told > ended) _told = 0;  // another run has begun
  for (; _told < ended; ++_told)
    surroundings.out.write(lineOf(run->steps[_told], surroundings.style));
}

// A run that is at work has its instance's lock. One that never told its instance is over when its
// ending is told; one of which nothing is known but the beginning, when nothing has come for long.
bool Follower::isOver() const {
  const std::optional<Run> run = _reader->run();
  if (!run) return false;
  if (run->rcpHome) return !isAtWorkOn(*run->rcpHome);
  if (run->ending == Ending::argumentsMissing) return _idleLooks >= kLongIdle;
  return run->ending != Ending::brokenOff;
}

}  // namespace installer::ctl
