#include "ctl/trace/TraceWatch.h"

namespace installer::ctl {

bool TraceWatch::open(FileError& error) {
  std::unique_ptr<LineFile> file = openLineFile(_path, _link, error);
  if (!file) return false;
  _file = std::move(file);
  _reader.emplace(yearOf(_file->modified()));
  return true;
}

bool TraceWatch::readOn() {
  bool hasCome = false;
  while (const auto line = _file->next()) {
    _reader->add(*line);
    hasCome = true;
  }
  return hasCome;
}

}  // namespace installer::ctl
