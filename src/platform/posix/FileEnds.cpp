#include "platform/FileEnds.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "hotfix/base/Path.h"
#include "platform/files/Failure.h"
#include "platform/files/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

// Invalid with errno set.
RegularFile openBeneath(const std::string& folder, const std::string& below) {
  const std::size_t slash = below.rfind('/');
  const bool isDeeper = slash != std::string::npos;
  const Descriptor top = openFolderFollowingLinks(AT_FDCWD, folder);
  if (!top.valid()) return {};
  const Descriptor at = openFolderBeneath(top.get(), isDeeper ? below.substr(0, slash) : "");
  if (!at.valid()) return {};
  return openRegularFile(at.get(), isDeeper ? below.substr(slash + 1) : below);
}

// Fewer bytes when the file has become shorter; nullopt with errno set.
std::optional<std::string> readPart(const Descriptor& file, std::uint64_t from, std::size_t size) {
  std::string bytes(size, '\0');
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = uninterrupted([&] {
      return ::pread(file.get(), bytes.data() + done, size - done, static_cast<off_t>(from + done));
    });
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return bytes;
}

std::size_t least(std::uint64_t one, std::size_t other) {
  return static_cast<std::size_t>(std::min<std::uint64_t>(one, other));
}

}  // namespace

std::optional<FileEnds> readEnds(const std::string& folder, const std::string& below,
                                 const EndSizes& sizes, FileError& error) {
  const auto failed = [&] {
    error = readFailure(path::appendingComponent(folder, below), errno);
    return std::nullopt;
  };
  const RegularFile opened = openBeneath(folder, below);
  if (!opened.valid()) return failed();
  FileEnds ends;
  ends.size = static_cast<std::uint64_t>(opened.status.st_size);
  ends.modified = opened.status.st_mtime;
  ends.hasOtherNames = opened.status.st_nlink > 1;
  // What fits is one piece.
  const bool isWhole = ends.size <= sizes.head + sizes.tail;
  const std::size_t head = isWhole ? static_cast<std::size_t>(ends.size) : sizes.head;
  const std::size_t tail = isWhole ? 0 : least(ends.size, sizes.tail);
  auto headBytes = readPart(opened.file, 0, head);
  if (!headBytes) return failed();
  auto tailBytes = readPart(opened.file, ends.size - tail, tail);
  if (!tailBytes) return failed();
  ends.head = std::move(*headBytes);
  ends.tail = std::move(*tailBytes);
  ends.leftOut = ends.size - head - tail;
  return ends;
}

}  // namespace installer
