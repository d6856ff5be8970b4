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

  std::optional<std::string> nextWithin(std::size_t& bytes) override {
    do {
      if (takeLine()) return std::exchange(_line, {});
    } while (fill(bytes));
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
  bool fill(std::size_t& bytes) {
    const std::size_t most = std::min(_chunk.size(), bytes);
    const ssize_t count =
        uninterrupted([&] { return ::read(_file.file.get(), _chunk.data(), most); });
    if (count < 0) _error = readFailure(_path, errno);
    _begin = 0;
    _end = count > 0 ? static_cast<std::size_t>(count) : 0;
    _read += static_cast<off_t>(_end);
    bytes -= _end;
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

RegularFile openFileOf(const LineSource& source) {
  return source.link == FinalLink::follow ? openRegularFileFollowingLinks(AT_FDCWD, source.path)
                                          : openRegularFile(AT_FDCWD, source.path);
}

// nullptr when the file is wanted.
const char* whyNotWanted(const LineSource& source, const struct stat& status) {
  if (!source.mayOwn) return nullptr;
  if (!source.mayOwn(status.st_uid)) return "it belongs to another user";
  return status.st_nlink == 1 ? nullptr : "it has several names";
}

}  // namespace

std::unique_ptr<LineFile> openLineFile(const LineSource& source, FileError& error) {
  RegularFile file = openFileOf(source);
  if (!file.valid()) {
    error = readFailure(source.path, errno);
    return nullptr;
  }
  if (const char* const reason = whyNotWanted(source, file.status)) {
    error = failure(FileError::kOther, source.path, "read", reason);
    return nullptr;
  }
  return std::make_unique<OpenLineFile>(source.path, std::move(file));
}

}  // namespace installer
