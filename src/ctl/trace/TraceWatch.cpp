#include "ctl/trace/TraceWatch.h"

namespace installer::ctl {

namespace {

constexpr std::size_t kSome = std::size_t{1} << 20;  // bytes

}  // namespace

bool TraceWatch::open(FileError& error) {
  std::unique_ptr<LineFile> file = openLineFile(_source, error);
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

void TraceWatch::readSome() {
  std::size_t bytes = kSome;
  while (const auto line = _file->nextWithin(bytes)) _reader->add(*line);
}

}  // namespace installer::ctl
