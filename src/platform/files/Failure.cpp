#include "platform/files/Failure.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

namespace installer {

std::string reasonOf(int error) {
  return std::generic_category().message(error);
}

FileError failure(int code, const std::string& path, std::string_view done,
                  std::string_view reason) {
  return {code, fmt::format("\"{}\" cannot be {}: {}", path, done, reason)};
}

FileError failure(const std::string& path, std::string_view done, int error) {
  const int code = error == EEXIST ? FileError::kExists : FileError::kOther;
  return failure(code, path, done, reasonOf(error));
}

FileError failureWithItem(const std::string& path, std::string_view done, int error) {
  FileError failed = failure(path, done, error);
  if (tellsMissing(error)) failed.code = FileError::kMissing;
  return failed;
}

FileError readFailure(const std::string& path, int error) {
  FileError failed = failureWithItem(path, "read", error);
  if (error == EISDIR || error == EINVAL) failed.code = FileError::kNoFile;
  return failed;
}

FileError lockFailure(const std::string& path, int error) {
  FileError failed = failureWithItem(path, "locked", error);
  if (error == ENOLCK || error == ENOSYS || error == EOPNOTSUPP) failed.code = FileError::kNoLocks;
  if (error == EACCES || error == EPERM || error == ELOOP || error == ENAMETOOLONG)
    failed.code = FileError::kClosed;
  return failed;
}

bool tellsMissing(int error) {
  return error == ENOENT || error == ENOTDIR;
}

}  // namespace installer
