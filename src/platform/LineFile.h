#pragma once

#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "hotfix/platform/FileError.h"

namespace installer {

// A regular file that is read line by line in bounded memory, however long it is, and while it
// grows.
class LineFile {
 public:
  // What a line has beyond that is dropped.
  static constexpr std::size_t kLongestLine = std::size_t{64} << 10;  // bytes

  LineFile() = default;
  LineFile(const LineFile&) = delete;
  LineFile& operator=(const LineFile&) = delete;
  virtual ~LineFile() = default;

  // The next line without its line feed and without zero bytes before it: a file that was emptied
  // under somebody who goes on writing begins with a hole. nullopt when no whole line is left now;
  // more may come.
  [[nodiscard]] std::optional<std::string> next() {
    std::size_t all = std::numeric_limits<std::size_t>::max();
    return nextWithin(all);
  }
  // The same, reading at most so many bytes, from which those that were read are taken off; nullopt
  // also when they do not suffice. What has come of the line by then is kept.
  [[nodiscard]] virtual std::optional<std::string> nextWithin(std::size_t& bytes) = 0;
  // What stands behind the last line feed, once there are no more lines.
  [[nodiscard]] virtual std::string rest() = 0;

  // Why the file cannot be read any further; nullopt when it can.
  virtual const std::optional<FileError>& readError() const = 0;
  // When it was changed last.
  virtual std::time_t modified() const = 0;
  // Whether another file has taken its place, or it has become shorter than what was read.
  virtual bool isReplaced() const = 0;
};

// Whether a link in the last component of a path is followed.
enum class FinalLink { follow, refuse };

// What a LineFile reads.
struct LineSource {
  std::string path;
  FinalLink link = FinalLink::refuse;
  // Who may own the file, for what other users could have planted: asked of the very file that is
  // opened. Empty when anybody may. Where it counts, a file with several names is refused, for
  // others can give one to a file that they cannot write.
  std::function<bool(uid_t)> mayOwn;
};

// Opens the file without waiting for anything. Null, with `error` set, for what is missing, no
// regular file, not wanted, or kept from this process.
[[nodiscard]] std::unique_ptr<LineFile> openLineFile(const LineSource& source, FileError& error);

}  // namespace installer
