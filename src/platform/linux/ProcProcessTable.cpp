#include "platform/linux/ProcProcessTable.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <utility>

#include "platform/Reported.h"
#include "platform/files/Failure.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"
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

bool isRefusal(int error) {
  return error == EACCES || error == EPERM;
}

// The kernel's own processes have no executable, some have ended meanwhile, and some are not ours
// to look at.
bool mayBeLeftOut(int error) {
  return error == ENOENT || error == ESRCH || isRefusal(error);
}

// Whether root is kept from a process, as in a container that lacks the right to follow others. Of
// all the processes one line tells then.
bool isNewsForRoot(int error, bool& isRefusalTold) {
  return isRefusal(error) && geteuid() == 0 && !std::exchange(isRefusalTold, true);
}

// Why the process does not tell its executable; 0 when it does.
int errorOfExecutable(int table, const std::string& process) {
  const std::string link = process + "/exe";
  char first = 0;
  return readlinkat(table, link.c_str(), &first, 1) == -1 ? errno : 0;
}

// The kernel's own processes are many, and have no more of a command line than of an executable.
bool hasExecutable(int table, const std::string& process) {
  return errorOfExecutable(table, process) != ENOENT;
}

bool belongsTo(uid_t user, int table, const std::string& process) {
  struct stat status {};
  return fstatat(table, process.c_str(), &status, 0) == 0 && status.st_uid == user;
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

std::optional<std::string> ProcProcessTable::executableOf(int table, const std::string& process,
                                                          bool& isRefusalTold) const {
  const std::string link = process + "/exe";
  std::array<char, PATH_MAX> bytes;
  const ssize_t length = readlinkat(table, link.c_str(), bytes.data(), bytes.size());
  if (length == -1) {
    const int error = errno;
    if (!mayBeLeftOut(error) || isNewsForRoot(error, isRefusalTold))
      tellUnreadable(_folder + "/" + link, error);
    return std::nullopt;
  }
  std::string path(bytes.data(), static_cast<std::size_t>(length));
  if (path.ends_with(kDeleted) && isMarked(table, link, path))
    path.resize(path.size() - kDeleted.size());
  return path;
}

// Empty for a process that has ended. The kernel tells all of it at once.
std::string_view ProcProcessTable::commandLineOf(int table, const std::string& process,
                                                 std::vector<char>& space) const {
  const std::string name = process + "/cmdline";
  const Descriptor file(openat(table, name.c_str(), O_RDONLY | O_CLOEXEC));
  const auto readAll = [&] { return read(file.get(), space.data(), space.size()); };
  const ssize_t count = file.valid() ? uninterrupted(readAll) : -1;
  if (count == -1 && !mayBeLeftOut(errno)) tellUnreadable(_folder + "/" + name, errno);
  return {space.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

template <class Visit>
void ProcProcessTable::eachProcess(Visit visit) const {
  FolderReader table(openFolderFollowingLinks(AT_FDCWD, _folder));
  while (const auto name = table.next())
    if (isNumber(*name)) visit(table.descriptor(), *name);
  if (table.error() != 0) tellUnreadable(_folder, table.error());
}

std::vector<std::string> ProcProcessTable::executables() const {
  std::vector<std::string> paths;
  bool isRefusalTold = false;
  eachProcess([&](int table, const std::string& process) {
    if (auto path = executableOf(table, process, isRefusalTold)) paths.push_back(std::move(*path));
  });
  return paths;
}

// A table that shows its readers their own processes only lacks the first one.
bool ProcProcessTable::seesAll() {
  bool hasFirst = false;
  bool isRefused = false;
  eachProcess([&](int table, const std::string& process) {
    if (process == "1") hasFirst = true;
    if (isRefusal(errorOfExecutable(table, process))) isRefused = true;
  });
  return hasFirst && !isRefused;
}

std::vector<std::vector<std::string>> ProcProcessTable::commandLines(uid_t user) {
  std::vector<std::vector<std::string>> lines;
  std::vector<char> space(kLongestCommandLine);
  eachProcess([&](int table, const std::string& process) {
    if (!hasExecutable(table, process) || !belongsTo(user, table, process)) return;
    auto line = argumentsIn(commandLineOf(table, process, space));
    if (!line.empty()) lines.push_back(std::move(line));
  });
  return lines;
}

}  // namespace installer
