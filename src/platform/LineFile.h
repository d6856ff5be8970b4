#pragma once

#include <cstddef>
#include <ctime>
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
  [[nodiscard]] virtual std::optional<std::string> next() = 0;
  // What stands behind the last line feed, once there are no more lines.
  [[nodiscard]] virtual std::string rest() = 0;

  // Why the file cannot be read any further; nullopt when it can.
  virtual const std::optional<FileError>& readError() const = 0;
  // When it was changed last.
  virtual std::time_t modified() const = 0;
  // Whether another file has taken its place, or it has become shorter than what was read.
  virtual bool isReplaced() const = 0;
};

// Opens the file without waiting for anything. Null, with `error` set, for what is missing, no
// regular file, or kept from this process; a link in the last component is followed on demand.
enum class FinalLink { follow, refuse };
[[nodiscard]] std::unique_ptr<LineFile> openLineFile(const std::string& path, FinalLink link,
                                                     FileError& error);

}  // namespace installer
