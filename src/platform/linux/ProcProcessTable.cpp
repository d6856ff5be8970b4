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

#include "hotfix/platform/ProcessKeys.h"
#include "platform/posix/ExecutablePath.h"
#include "platform/posix/Memory.h"

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

std::optional<std::string> executableOf(int table, const char* process) {
  const std::string link = std::string(process) + "/exe";
  std::array<char, PATH_MAX> bytes;
  const ssize_t length = readlinkat(table, link.c_str(), bytes.data(), bytes.size());
  if (length == -1) return std::nullopt;
  std::string path(bytes.data(), static_cast<std::size_t>(length));
  if (path.ends_with(kDeleted) && isMarked(table, link, path))
    path.resize(path.size() - kDeleted.size());
  return path;
}

}  // namespace

std::vector<std::string> ProcProcessTable::executables() const {
  const std::unique_ptr<DIR, int (*)(DIR*)> table(opendir(_folder.c_str()), closedir);
  std::vector<std::string> paths;
  if (!table) checkMemory(errno);
  if (!table) return paths;
  while (const dirent* entry = readdir(table.get())) {
    if (!isNumber(entry->d_name)) continue;
    if (auto path = executableOf(dirfd(table.get()), entry->d_name)) paths.push_back(*path);
  }
  return paths;
}

std::vector<std::string> ProcProcessTable::valuesForKey(std::string_view key) {
  if (key == processKey::kExecutable) return executables();
  if (key != processKey::kName) return {};
  std::vector<std::string> names = executables();
  std::transform(names.begin(), names.end(), names.begin(), fileNameOf);
  return names;
}

std::string ProcProcessTable::asReported(const std::string& path) {
  return resolvedOrSame(path);
}

}  // namespace installer
