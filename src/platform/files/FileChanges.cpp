#include "platform/files/FileChanges.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "platform/Interruption.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/files/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

constexpr std::size_t kCopyBlock = std::size_t{256} << 10;  // bytes through our own memory

int answer(int result) {
  return result == 0 ? 0 : errno;
}

int writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = uninterrupted([&] { return ::write(file, bytes.data(), bytes.size()); });
    if (count == -1) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

// Whether that many bytes were copied. Whatever keeps the kernel from it, the plain loop after it
// meets and reports.
bool copyInKernel(int from, int to, std::size_t size) {
  while (size > 0) {
    const ssize_t count = syscalls::copyRange(from, to, size);
    if (count <= 0) return false;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

FileChanges::FileChanges(Door refusal) : _refusal(std::move(refusal)) {}

int FileChanges::createFile(int folder, const std::string& name, mode_t mode, Descriptor& file) {
  checkInterruption();
  if (const int refused = _refusal(FileOperation::kCreateTemporary)) return refused;
  file = openEntry(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
  return file.valid() ? 0 : errno;
}

int FileChanges::makeFolder(int folder, const std::string& name, mode_t mode) {
  checkInterruption();
  if (const int refused = _refusal(FileOperation::kMakeDirectory)) return refused;
  return answer(::mkdirat(folder, name.c_str(), mode));
}

int FileChanges::makeLink(int folder, const std::string& name, const std::string& target) {
  checkInterruption();
  if (const int refused = _refusal(FileOperation::kLink)) return refused;
  return answer(::symlinkat(target.c_str(), folder, name.c_str()));
}

int FileChanges::makeSecondName(int folder, const std::string& name, int otherFolder,
                                const std::string& otherName) {
  checkInterruption();
  if (const int refused = _refusal(FileOperation::kLink)) return refused;
  return answer(::linkat(folder, name.c_str(), otherFolder, otherName.c_str(), 0));
}

int FileChanges::write(int file, std::string_view bytes) {
  if (const int refused = _refusal(FileOperation::kWrite)) return refused;
  return writeAll(file, bytes);
}

int FileChanges::copyBytes(int from, int to, std::size_t size) {
  if (const int refused = _refusal(FileOperation::kWrite)) return refused;
  if (size > 0 && copyInKernel(from, to, size)) return 0;
  return copyInBlocks(from, to, size);
}

int FileChanges::copyInBlocks(int from, int to, std::size_t size) {
  _block.resize(kCopyBlock);
  const auto readBlock = [&] { return ::read(from, _block.data(), _block.size()); };
  std::size_t copied = 0;
  while (const ssize_t count = uninterrupted(readBlock)) {
    if (count == -1) return errno;
    const auto length = static_cast<std::size_t>(count);
    if (const int error = writeAll(to, {_block.data(), length})) return error;
    copied += length;
    if (copied == size) return 0;
  }
  return 0;
}

int FileChanges::truncate(int file) {
  if (const int refused = _refusal(FileOperation::kWrite)) return refused;
  return answer(::ftruncate(file, 0));
}

int FileChanges::flush(int file) {
  if (const int refused = _refusal(FileOperation::kSync)) return refused;
  return answer(syscalls::flushFile(file));
}

int FileChanges::flushFolder(int folder) {
  const int error = flush(folder);
  return error == EINVAL ? 0 : error;
}

int FileChanges::flushFileSystem(int folder) {
  if (const int refused = _refusal(FileOperation::kSync)) return refused;
  return answer(syscalls::flushFileSystem(folder));
}

int FileChanges::rename(int folder, const std::string& from, const std::string& to) {
  if (const int refused = _refusal(FileOperation::kRename)) return refused;
  return answer(::renameat(folder, from.c_str(), folder, to.c_str()));
}

int FileChanges::renameKeepingExisting(int folder, const std::string& from, const std::string& to) {
  if (const int refused = _refusal(FileOperation::kRename)) return refused;
  return answer(syscalls::renameKeepingExisting(folder, from.c_str(), folder, to.c_str()));
}

int FileChanges::unlink(int folder, const std::string& name) {
  if (const int refused = _refusal(FileOperation::kUnlink)) return refused;
  return answer(::unlinkat(folder, name.c_str(), 0));
}

int FileChanges::removeEmptyFolder(int folder, const std::string& name) {
  if (const int refused = _refusal(FileOperation::kUnlink)) return refused;
  return answer(::unlinkat(folder, name.c_str(), AT_REMOVEDIR));
}

int FileChanges::changeOwner(int file, uid_t owner, gid_t group) {
  if (const int refused = _refusal(FileOperation::kChangeOwner)) return refused;
  return answer(::fchown(file, owner, group));
}

int FileChanges::changeMode(int file, mode_t mode) {
  if (const int refused = _refusal(FileOperation::kChangeMode)) return refused;
  return answer(::fchmod(file, mode));
}

int FileChanges::changeOwnerOfItem(int item, uid_t owner, gid_t group) {
  if (const int refused = _refusal(FileOperation::kChangeOwner)) return refused;
  return answer(syscalls::changeOwnerOfItem(item, owner, group));
}

int FileChanges::changeModeOfItem(int item, mode_t mode) {
  if (const int refused = _refusal(FileOperation::kChangeMode)) return refused;
  return answer(syscalls::changeModeOfItem(item, mode));
}

int FileChanges::changeOwnerOfEntry(int folder, const std::string& name, uid_t owner, gid_t group) {
  if (const int refused = _refusal(FileOperation::kChangeOwner)) return refused;
  return answer(::fchownat(folder, name.c_str(), owner, group, AT_SYMLINK_NOFOLLOW));
}

int FileChanges::changeModeOfEntry(int folder, const std::string& name, mode_t mode) {
  if (const int refused = _refusal(FileOperation::kChangeMode)) return refused;
  return answer(::fchmodat(folder, name.c_str(), mode, 0));
}

}  // namespace installer
