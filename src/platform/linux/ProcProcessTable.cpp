#include "platform/linux/ProcProcessTable.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <memory>
#include <optional>
#include <utility>

#include "platform/Reported.h"
#include "platform/files/Failure.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Memory.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {
namespace {

// The kernel puts this behind the path of an executable that has been removed.
constexpr std::string_view kDeleted = " (deleted)";

bool isNumber(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Whether the mark is the kernel's: an executable that has this very name bears it itself. How many
// other names it has tells nothing.
bool isMarked(int table, const std::string& link, const std::string& path) {
  struct stat running {};
  if (fstatat(table, link.c_str(), &running, 0) != 0) return false;
  struct stat named {};
  return stat(path.c_str(), &named) != 0 || named.st_dev != running.st_dev ||
         named.st_ino != running.st_ino;
}

// A process that is not seen passes for one that does not run.
void tellUnreadable(const std::string& path, int error) {
  checkMemory(error);
  reported::tell(failure(path, "read", error));
}

// The kernel's own processes have no executable, some have ended meanwhile, and some are not ours
// to look at.
bool mayBeLeftOut(int error) {
  return error == ENOENT || error == ESRCH || error == EACCES || error == EPERM;
}

bool isOwn(int table, const char* process) {
  struct stat status {};
  return fstatat(table, process, &status, 0) == 0 && status.st_uid == geteuid();
}

// Empty for a process that has ended, and for the kernel's own.
std::string commandLineOf(int table, const char* process) {
  const std::string name = std::string(process) + "/cmdline";
  const Descriptor file(openat(table, name.c_str(), O_RDONLY | O_CLOEXEC));
  std::string bytes(kLongestCommandLine, '\0');
  std::size_t size = 0;
  while (size < bytes.size()) {
    const auto more = [&] { return read(file.get(), bytes.data() + size, bytes.size() - size); };
    const ssize_t count = uninterrupted(more);
    if (count <= 0) break;
    size += static_cast<std::size_t>(count);
  }
  bytes.resize(size);
  return bytes;
}

// A zero byte stands behind each argument.
std::vector<std::string> argumentsIn(std::string_view bytes) {
  std::vector<std::string> arguments;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    arguments.emplace_back(bytes.substr(0, end));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return arguments;
}

}  // namespace

std::optional<std::string> ProcProcessTable::executableOf(int table, const char* process) const {
  const std::string link = std::string(process) + "/exe";
  std::array<char, PATH_MAX> bytes;
  const ssize_t length = readlinkat(table, link.c_str(), bytes.data(), bytes.size());
  if (length == -1) {
    if (!mayBeLeftOut(errno)) tellUnreadable(_folder + "/" + link, errno);
    return std::nullopt;
  }
  std::string path(bytes.data(), static_cast<std::size_t>(length));
  if (path.ends_with(kDeleted) && isMarked(table, link, path))
    path.resize(path.size() - kDeleted.size());
  return path;
}

template <class Visit>
void ProcProcessTable::eachProcess(Visit visit) const {
  const std::unique_ptr<DIR, int (*)(DIR*)> table(opendir(_folder.c_str()), closedir);
  if (!table) return tellUnreadable(_folder, errno);
  errno = 0;
  while (const dirent* entry = readdir(table.get())) {
    if (isNumber(entry->d_name)) visit(dirfd(table.get()), entry->d_name);
    errno = 0;  // a visit has had its own failures
  }
  if (errno != 0) tellUnreadable(_folder, errno);
}

std::vector<std::string> ProcProcessTable::executables() const {
  std::vector<std::string> paths;
  eachProcess([&](int table, const char* process) {
    if (auto path = executableOf(table, process)) paths.push_back(*path);
  });
  return paths;
}

std::vector<std::vector<std::string>> ProcProcessTable::commandLines() {
  std::vector<std::vector<std::string>> lines;
  eachProcess([&](int table, const char* process) {
    if (!isOwn(table, process)) return;
    auto line = argumentsIn(commandLineOf(table, process));
    if (!line.empty()) lines.push_back(std::move(line));
  });
  return lines;
}

}  // namespace installer
