#include "platform/LineFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "platform/files/Failure.h"
#include "platform/files/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

constexpr std::size_t kChunk = std::size_t{64} << 10;

class OpenLineFile : public LineFile {
 public:
  OpenLineFile(std::string path, RegularFile file)
      : _path(std::move(path)), _file(std::move(file)), _chunk(kChunk, '\0') {}

  std::optional<std::string> next() override {
    do {
      if (takeLine()) return std::exchange(_line, {});
    } while (fill());
    return std::nullopt;
  }
  std::string rest() override { return std::exchange(_line, {}); }
  const std::optional<FileError>& readError() const override { return _error; }
  std::time_t modified() const override { return statusNow().st_mtime; }
  bool isReplaced() const override {
    const auto there = statusFollowingLinks(AT_FDCWD, _path);
    const struct stat ours = statusNow();
    return !there || there->st_ino != ours.st_ino || there->st_dev != ours.st_dev ||
           ours.st_size < _read;
  }

 private:
  // Moves what the chunk has of the current line; whether the line has ended.
  bool takeLine() {
    if (_line.empty()) _begin = _chunk.find_first_not_of('\0', _begin);
    _begin = std::min(_begin, _end);
    const std::size_t feed = std::min(_chunk.find('\n', _begin), _end);
    const std::size_t room = kLongestLine - _line.size();
    _line.append(_chunk, _begin, std::min(feed - _begin, room));
    _begin = std::min(feed + 1, _end);
    return feed < _end;
  }
  bool fill() {
    const ssize_t count =
        uninterrupted([&] { return ::read(_file.file.get(), _chunk.data(), _chunk.size()); });
    if (count < 0) _error = readFailure(_path, errno);
    _begin = 0;
    _end = count > 0 ? static_cast<std::size_t>(count) : 0;
    _read += static_cast<off_t>(_end);
    return _end > 0;
  }
  struct stat statusNow() const {
    return statusOf(_file.file).value_or(_file.status);
  }

  const std::string _path;
  const RegularFile _file;
  std::string _chunk;  // what was read last, used from _begin to _end
  std::size_t _begin = 0;
  std::size_t _end = 0;
  off_t _read = 0;
  std::string _line;  // the beginning of the current line
  std::optional<FileError> _error;
};

}  // namespace

std::unique_ptr<LineFile> openLineFile(const std::string& path, FinalLink link, FileError& error) {
  RegularFile file = link == FinalLink::follow ? openRegularFileFollowingLinks(AT_FDCWD, path)
                                               : openRegularFile(AT_FDCWD, path);
  if (file.valid()) return std::make_unique<OpenLineFile>(path, std::move(file));
  error = readFailure(path, errno);
  return nullptr;
}

}  // namespace installer
