#include "platform/PrivateRun.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <set>
#include <system_error>

#include "platform/Interruption.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"
#include "platform/files/TreeRemoval.h"
#include "platform/posix/ChildOfSignals.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SignalText.h"
#include "platform/posix/Uninterrupted.h"

namespace installer::privately {

namespace {

constexpr int kNotBegun = 127;

std::string words(int error) {
  return std::generic_category().message(error);
}

// Thrown in the new process, where the view cannot be put together.
struct Refusal {
  std::string reason;
};

void demand(bool isDone, const std::string& what) {
  if (!isDone) throw Refusal{what + ": " + words(errno)};
}

void writeLine(const std::string& file, const std::string& text) {
  const Descriptor descriptor(open(file.c_str(), O_WRONLY | O_CLOEXEC));
  demand(descriptor.valid() &&
             write(descriptor.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()),
         file);
}

// What is seen instead of the machine's root, in the new process.
class PrivateRoot {
 public:
  explicit PrivateRoot(const View& view) : _view(view), _root(view.work + "/root") {}

  void enter() {
    demand(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "the mounts");
    demand(mkdir(_root.c_str(), S_IRWXU) == 0, _root);
    bind("/", _root, MS_REC);
    makeReadOnly(_root);
    giveTemporaryFolder();
    for (const auto& [place, content] : _view.replaced) show(content, place);
    leaveSystemLog();
    // Where it cannot be had the machine's processes are seen.
    constexpr unsigned long kFlags = MS_RDONLY | MS_NOSUID | MS_NODEV | MS_NOEXEC;
    (void)mount("proc", (_root + "/proc").c_str(), "proc", kFlags, nullptr);
    enterRoot();
  }

 private:
  static void bind(const std::string& source, const std::string& place, unsigned long flags = 0) {
    demand(mount(source.c_str(), place.c_str(), nullptr, MS_BIND | flags, nullptr) == 0, place);
  }

  static void makeReadOnly(const std::string& place) {
    mount_attr change{};
    change.attr_set = MOUNT_ATTR_RDONLY;
    demand(mount_setattr(AT_FDCWD, place.c_str(), AT_RECURSIVE, &change, sizeof change) == 0,
           place);
  }

  static void makeWritable(const std::string& place) {
    mount_attr change{};
    change.attr_clr = MOUNT_ATTR_RDONLY;
    demand(mount_setattr(AT_FDCWD, place.c_str(), 0, &change, sizeof change) == 0, place);
  }

  // The source is the machine's, outside of the new root, and can be written.
  void show(const std::string& content, const std::string& place) {
    bind(content, _root + place);
    makeWritable(_root + place);
  }

  void giveTemporaryFolder() {
    constexpr mode_t kOpenToAll = 01777;
    demand(chmod(_view.temporary.c_str(), kOpenToAll) == 0, _view.temporary);
    show(_view.temporary, "/tmp");
    std::set<std::string> entries;
    for (const std::string& path : _view.needed)
      entries.insert(path.substr(0, path.find('/', sizeof "/tmp/" - 1)));
    for (const std::string& entry : entries) showAsItIs(entry);
  }

  // It cannot be written here either, nor can what is mounted below it.
  void showAsItIs(const std::string& entry) {
    struct stat status {};
    if (stat(entry.c_str(), &status) != 0) return;
    const std::string place = _root + entry;
    if (!exists(place)) make(place, S_ISDIR(status.st_mode));
    bind(entry, place, MS_REC);
    makeReadOnly(place);
  }

  static bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

  static void make(const std::string& path, bool isFolder) {
    if (isFolder) return demand(mkdir(path.c_str(), S_IRWXU) == 0, path);
    const Descriptor file(open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR));
    demand(file.valid(), path);
  }

  // Nobody can be reached by a device that is none of a socket.
  void leaveSystemLog() {
    const std::string log = resolved("/dev/log");
    if (exists(log)) bind("/dev/null", _root + log);
  }

  void enterRoot() {
    const std::string folder = resolved(".");
    demand(chroot(_root.c_str()) == 0, _root);
    // A folder that is not seen any more is no use to the work either.
    demand(chdir(folder.c_str()) == 0 || chdir("/") == 0, "/");
  }

  const View& _view;
  const std::string _root;
};

// Root of the new namespaces is whoever started them.
void becomeRootOf(uid_t user, gid_t group) {
  writeLine("/proc/self/setgroups", "deny");
  writeLine("/proc/self/uid_map", "0 " + std::to_string(user) + " 1\n");
  writeLine("/proc/self/gid_map", "0 " + std::to_string(group) + " 1\n");
}

void sendOutputTo(const std::string& file) {
  const Descriptor output(
      open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR));
  demand(output.valid() && dup2(output.get(), STDOUT_FILENO) != -1 &&
             dup2(output.get(), STDERR_FILENO) != -1,
         file);
}

struct Caller {
  uid_t user = geteuid();
  gid_t group = getegid();

  unsigned long namespaces() const {
    const unsigned long all = CLONE_NEWNS | CLONE_NEWPID;
    return user == 0 ? all : all | CLONE_NEWUSER;
  }
};

// The work's own process.
[[noreturn]] void beWorker(const std::function<int()>& work) {
  int status = 1;
  try {
    status = work();
  } catch (const Interrupted&) {
    // as any other end that was not foreseen
  } catch (const std::exception&) {  // nothing gets out of this process
  }
  (void)std::fflush(nullptr);  // what cannot be written is lost
  _exit(status);
}

// The wait status.
int waitFor(pid_t child) {
  {
    const ChildOfSignals told(child);
    siginfo_t ended{};
    (void)uninterrupted(
        [&] { return waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT); });
  }
  int status = 0;
  (void)uninterrupted([&] { return waitpid(child, &status, 0); });
  return status;
}

// What the two processes tell: why the view cannot be had, and the work's wait status.
struct Reports {
  Descriptor refusals;
  Descriptor end;
};

// The first of the new processes, with which all others end. The work is a child of it, for it may
// change its user, and the system then forgets whose end is to be its own.
[[noreturn]] void beKeeper(const View& view, const std::function<int()>& work, const Caller& caller,
                           Reports reports) {
  std::string reason;
  try {
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);  // without it the work goes on to its end
    if (caller.user != 0) becomeRootOf(caller.user, caller.group);
    sendOutputTo(view.output);
    PrivateRoot(view).enter();
    const pid_t worker = fork();
    demand(worker != -1, "a process");
    reports.refusals = Descriptor();
    if (worker == 0) {
      reports.end = Descriptor();
      beWorker(work);
    }
    const int status = waitFor(worker);
    (void)!write(reports.end.get(), &status, sizeof status);  // none is an end, too
    _exit(0);
  } catch (const Refusal& refusal) {
    reason = refusal.reason;
  } catch (const std::exception& error) {
    reason = error.what();
  }
  (void)!write(reports.refusals.get(), reason.data(), reason.size());  // the end tells it
  _exit(kNotBegun);
}

std::string readAll(const Descriptor& pipe) {
  std::array<char, 512> block;
  std::string all;
  for (;;) {
    const ssize_t count =
        uninterrupted([&] { return read(pipe.get(), block.data(), block.size()); });
    if (count <= 0) return all;
    all.append(block.data(), static_cast<std::size_t>(count));
  }
}

// Without a report the keeper itself was ended.
End endOf(int keeper, const Descriptor& report) {
  int status = keeper;
  (void)!uninterrupted([&] { return read(report.get(), &status, sizeof status); });
  if (WIFSIGNALED(status)) return {1, signalText(WTERMSIG(status))};
  return {WEXITSTATUS(status), std::nullopt};
}

// The copy has closed folders where the instance has some, and nobody but root empties those. What
// cannot be opened is told by the removal. No other process works in the folder any more.
void openAllToOwner(int above, const std::string& name, int depth) {
  struct stat status {};
  if (fstatat(above, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (!S_ISDIR(status.st_mode) || depth > kMaximumDepth) return;
  if ((status.st_mode & S_IRWXU) != S_IRWXU) (void)!fchmodat(above, name.c_str(), S_IRWXU, 0);
  FolderReader reader(openFolder(above, name));
  while (const auto entry = reader.next()) openAllToOwner(reader.descriptor(), *entry, depth + 1);
}

}  // namespace

std::optional<std::string> lack() {
  return std::nullopt;
}

std::optional<std::string> makeWorkFolder(const std::string& folder, std::string& reason) {
  std::string name = folder + "/hotfixctl-rehearsal-XXXXXX";
  if (mkdtemp(name.data()) != nullptr) return name;
  reason = "\"" + folder + "\": " + words(errno);
  return std::nullopt;
}

bool removeWorkFolder(const std::string& folder) {
  const Place place = openPlace(folder);
  FileChanges changes([](FileOperation) { return 0; });
  if (place.usable() && geteuid() != 0) openAllToOwner(place.folder.get(), place.name, 0);
  const int error =
      place.usable() ? removeEntry(changes, place.folder.get(), place.name) : place.error;
  return error == 0 || error == ENOENT;
}

std::string resolved(const std::string& path) {
  std::array<char, PATH_MAX> real;
  return realpath(path.c_str(), real.data()) == nullptr ? path : std::string(real.data());
}

std::optional<End> run(const View& view, const std::function<int()>& work, std::string& reason) {
  std::array<int, 2> refusals{};
  std::array<int, 2> ends{};
  if (pipe2(refusals.data(), O_CLOEXEC) != 0) {
    reason = words(errno);
    return std::nullopt;
  }
  const Descriptor told(refusals[0]);
  Reports reports{Descriptor(refusals[1]), Descriptor()};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    reason = words(errno);
    return std::nullopt;
  }
  const Descriptor ended(ends[0]);
  reports.end = Descriptor(ends[1]);
  const Caller caller;
  (void)std::fflush(nullptr);  // what is pending is this process's to write
  const auto keeper =
      static_cast<pid_t>(syscall(SYS_clone, caller.namespaces() | SIGCHLD, 0, 0, 0, 0));
  if (keeper == 0) beKeeper(view, work, caller, std::move(reports));
  if (keeper == -1) {
    reason = "a process with mounts of its own: " + words(errno);
    return std::nullopt;
  }
  reports = {};
  reason = readAll(told);
  const int status = waitFor(keeper);
  if (!reason.empty()) return std::nullopt;
  return endOf(status, ended);
}

}  // namespace installer::privately
