#pragma once

#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include "ctl/trace/RunReader.h"
#include "ctl/trace/TraceFile.h"
#include "platform/LineFile.h"

namespace installer::ctl {

// A trace that is read as it grows.
class TraceWatch {
 public:
  explicit TraceWatch(LineSource source) : _source(std::move(source)) {}

  // Begins at the beginning of what stands there now. False, with `error` set and everything as
  // before, when it cannot be read.
  [[nodiscard]] bool open(FileError& error);

  // The following are for an opened one. Reads what has come since; false when nothing has.
  bool readOn();
  // The same, but no more than can be read in a moment: for who has to watch something else too.
  void readSome();
  // Whether another trace has taken its place.
  bool isReplaced() const { return _file->isReplaced(); }
  // Why it cannot be read any further.
  const std::optional<FileError>& readError() const { return _file->readError(); }
  std::time_t modified() const { return _file->modified(); }
  std::optional<Run> run() const { return _reader->run(); }
  Trace trace() const {
    return {_source.path, _file->modified(), _reader->lines(), _reader->otherLines(),
            _reader->run()};
  }

 private:
  const LineSource _source;
  std::unique_ptr<LineFile> _file;
  std::optional<RunReader> _reader;
};

}  // namespace installer::ctl
