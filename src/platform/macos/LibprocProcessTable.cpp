#include "platform/macos/LibprocProcessTable.h"

#include <libproc.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/Reported.h"
#include "platform/files/Failure.h"

namespace installer {
namespace {

// Processes that may start between counting them and listing them.
constexpr std::size_t kSpare = 64;

// A list that is full may lack processes, and is asked for again with more room.
std::vector<pid_t> allProcesses() {
  std::vector<pid_t> processes;
  std::size_t room = 0;
  do {
    const int expected = std::max(proc_listallpids(nullptr, 0), 0);
    room = std::max(static_cast<std::size_t>(expected), 2 * room) + kSpare;
    processes.resize(room);
    const int count = proc_listallpids(processes.data(), static_cast<int>(room * sizeof(pid_t)));
    if (count <= 0) reported::tell(failure("the process table", "read", errno));
    processes.resize(static_cast<std::size_t>(std::max(count, 0)));
  } while (processes.size() >= room);
  return processes;
}

bool belongsTo(uid_t user, pid_t process) {
  proc_bsdshortinfo info{};
  const int size = static_cast<int>(sizeof info);
  return proc_pidinfo(process, PROC_PIDT_SHORTBSDINFO, 0, &info, size) == size &&
         info.pbsi_uid == user;
}

// What the kernel keeps of the start: the number of arguments, the executable's path, zero bytes,
// and the arguments with a zero byte behind each; the environment follows. Empty when it does not
// tell.
std::string startOf(pid_t process) {
  std::array<int, 3> name{CTL_KERN, KERN_PROCARGS2, process};
  std::string bytes(kLongestCommandLine, '\0');
  std::size_t size = bytes.size();
  if (sysctl(name.data(), static_cast<u_int>(name.size()), bytes.data(), &size, nullptr, 0) != 0)
    size = 0;
  bytes.resize(size);
  return bytes;
}

std::vector<std::string> argumentsIn(std::string_view start) {
  std::vector<std::string> arguments;
  int count = 0;
  if (start.size() < sizeof count) return arguments;
  std::memcpy(&count, start.data(), sizeof count);
  start.remove_prefix(sizeof count);
  start.remove_prefix(std::min(start.find('\0'), start.size()));
  start.remove_prefix(std::min(start.find_first_not_of('\0'), start.size()));
  for (; count > 0 && !start.empty(); --count) {
    const std::size_t end = std::min(start.find('\0'), start.size());
    arguments.emplace_back(start.substr(0, end));
    start.remove_prefix(std::min(end + 1, start.size()));
  }
  return arguments;
}

}  // namespace

std::vector<std::string> LibprocProcessTable::executables() const {
  std::vector<std::string> paths;
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path;
  for (const pid_t process : allProcesses()) {
    const int length = proc_pidpath(process, path.data(), static_cast<uint32_t>(path.size()));
    if (length > 0) paths.emplace_back(path.data(), static_cast<std::size_t>(length));
  }
  return paths;
}

bool LibprocProcessTable::seesAll() {
  const std::vector<pid_t> processes = allProcesses();
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path;
  return std::none_of(processes.begin(), processes.end(), [&](pid_t process) {
    const auto size = static_cast<uint32_t>(path.size());
    return proc_pidpath(process, path.data(), size) <= 0 && (errno == EPERM || errno == EACCES);
  });
}

std::vector<std::vector<std::string>> LibprocProcessTable::commandLines(uid_t user) {
  std::vector<std::vector<std::string>> lines;
  for (const pid_t process : allProcesses()) {
    if (!belongsTo(user, process)) continue;
    auto line = argumentsIn(startOf(process));
    if (!line.empty()) lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace installer
