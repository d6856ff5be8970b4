#include "cli/CliSandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <utility>

namespace installer::cli {
namespace {

namespace fs = std::filesystem;

using test::giveUp;
using test::mountRoot;

// --- The namespace of the whole test program -----------------------------------------------------

struct World {
  std::string folder;  // a file system in memory, seen by this process alone
  std::optional<std::string> refusal;
  bool manyUsers = false;
  int sandboxes = 0;
};

World& world() {
  static World instance;
  return instance;
}

std::optional<std::string> buildWorld(World& made) {
  char folder[] = "/tmp/hotfix-cli-XXXXXX";
  if (mkdtemp(folder) == nullptr) return "no temporary folder: " + std::string(strerror(errno));
  made.folder = folder;
  if (auto refusal = test::enterPrivateMounts(made.folder)) return refusal;
  made.manyUsers = test::canGiveAway(made.folder);
  return std::nullopt;
}

class WorldEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { world().refusal = buildWorld(world()); }
  void TearDown() override {
    if (world().folder.empty()) return;
    umount2(world().folder.c_str(), MNT_DETACH);
    rmdir(world().folder.c_str());
  }
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new WorldEnvironment);

// --- One run: mounts, process 1, the program -----------------------------------------------------

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

[[noreturn]] void execute(std::vector<std::string> command, const RunOptions& options) {
  std::vector<std::string> variables;
  for (const auto& [name, value] : options.environment) variables.push_back(name + "=" + value);
  const auto arguments = pointers(command);
  const auto environment = pointers(variables);
  execve(arguments[0], arguments.data(), environment.data());
  giveUp("execute " + command[0]);
}

// Returns when the program has been started, so that the process list shows it.
void startBackground(const std::vector<std::string>& command, const RunOptions& options) {
  int started[2];
  if (pipe2(started, O_CLOEXEC) != 0) giveUp("pipe");
  if (fork() == 0) execute(command, options);
  close(started[1]);
  char nothing;
  (void)!read(started[0], &nothing, 1);  // its end tells enough
  close(started[0]);
}

[[noreturn]] void startProgram(const std::vector<std::string>& command, const RunOptions& options) {
  while (!options.awaited.empty() && access(options.awaited.c_str(), F_OK) != 0) usleep(1000);
  if (chdir(options.directory.c_str()) != 0) giveUp("enter " + options.directory);
  if (options.user) {
    if (setgroups(0, nullptr) != 0 || setgid(*options.user) != 0 || setuid(*options.user) != 0)
      giveUp("become another user");
  }
  for (const auto& [kind, most] : options.limits) {
    const rlimit limit{most, most};
    if (setrlimit(static_cast<__rlimit_resource>(kind), &limit) != 0) giveUp("limit");
  }
  for (const int number : options.ignoredSignals) signal(number, SIG_IGN);
  sigset_t blocked;
  sigemptyset(&blocked);
  for (const int number : options.blockedSignals) sigaddset(&blocked, number);
  sigprocmask(SIG_SETMASK, &blocked, nullptr);
  umask(options.mask);
  for (const int descriptor : options.closedDescriptors) close(descriptor);
  execute(command, options);
}

struct Ends {
  int input, out, err, report;
};

// Process 1 of the run: whatever is left ends with it.
[[noreturn]] void beInit(const std::string& root, const std::vector<std::string>& command,
                         const RunOptions& options, const Ends& ends) {
  dup2(ends.input, 0);
  dup2(ends.out, 1);
  dup2(ends.err, 2);
  umask(0);
  if (options.ownRootMount &&
      mount(root.c_str(), root.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
    giveUp("mount the root");
  mountRoot(root, HOTFIX_PROGRAM);
  if (chroot(root.c_str()) != 0 || chdir("/") != 0) giveUp("change root");
  for (const auto& program : options.background) startBackground(program, options);
  const pid_t program = fork();
  if (program == 0) startProgram(command, options);
  int status = 0;
  pid_t ended = 0;
  while ((ended = wait(&status)) != program && ended > 0) continue;
  (void)!write(ends.report, &status, sizeof status);  // no report is one too
  _exit(0);
}

// A descriptor to read the whole input from.
int inputFrom(const std::string& text) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return -1;
  (void)!write(ends[1], text.data(), text.size());  // the program reads less then
  close(ends[1]);
  return ends[0];
}

bool openOutput(const RunOptions& options, int (&ends)[2]) {
  if (options.terminal == 0) return pipe2(ends, O_CLOEXEC) == 0;
  const winsize size{24, options.terminal, 0, 0};
  if (openpty(&ends[0], &ends[1], nullptr, nullptr, &size) != 0) return false;
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  return true;
}

void drain(int descriptor, std::string& into, bool& open) {
  char buffer[65536];
  const ssize_t length = read(descriptor, buffer, sizeof buffer);
  if (length > 0) into.append(buffer, static_cast<std::size_t>(length));
  if (length <= 0) open = false;
}

// The socket takes few lines before its writers block, so it is emptied while the program runs.
void drainLog(int descriptor, std::vector<std::string>& into) {
  char buffer[8192];
  for (ssize_t length = 0; (length = recv(descriptor, buffer, sizeof buffer, MSG_DONTWAIT)) > 0;) {
    std::string line(buffer, static_cast<std::size_t>(length));
    while (!line.empty() && (line.back() == '\0' || line.back() == '\n')) line.pop_back();
    into.push_back(line);
  }
}

int exitStatus(int status) {
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Whether the text begins "Jan  1 00:00:00 ": letters of the pattern stand for digits ("0"), for a
// digit or a blank ("_") or for themselves.
bool beginsWithTime(const std::string& text) {
  static const std::string months = "JanFebMarAprMayJunJulAugSepOctNovDec";
  static const std::string pattern = " _0 00:00:00 ";
  const std::size_t month = months.find(text.substr(0, 3));
  if (text.size() < 16 || month == std::string::npos || month % 3 != 0) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = text[3 + i];
    const bool isDigit = c >= '0' && c <= '9';
    if (pattern[i] == '0' && !isDigit) return false;
    if (pattern[i] == '_' && !isDigit && c != ' ') return false;
    if (pattern[i] != '0' && pattern[i] != '_' && c != pattern[i]) return false;
  }
  return true;
}

// "<time> <host> HotfixInstaller[<number>] <<level>>: <text>"
std::optional<TraceLine> traceLine(const std::string& line) {
  if (!beginsWithTime(line)) return std::nullopt;
  const std::string name = " HotfixInstaller[";
  const std::size_t hostEnd = line.find(' ', 16);
  if (hostEnd == 16 || line.compare(hostEnd, name.size(), name) != 0) return std::nullopt;
  const std::size_t number = hostEnd + name.size();
  const std::size_t numberEnd = line.find_first_not_of("0123456789", number);
  if (numberEnd == number || line.compare(numberEnd, 3, "] <") != 0) return std::nullopt;
  for (const std::string level : {"Error", "Warning", "Notice", "Info"})
    if (line.compare(numberEnd + 3, level.size() + 3, level + ">: ") == 0)
      return TraceLine{level, line.substr(numberEnd + 3 + level.size() + 3)};
  return std::nullopt;
}

std::string kindOf(const struct stat& status) {
  if (S_ISLNK(status.st_mode)) return "link";
  if (S_ISDIR(status.st_mode)) return "folder";
  if (S_ISREG(status.st_mode)) return "file";
  return "other";
}

}  // namespace

RunOptions& RunOptions::set(const std::string& variable, const std::string& value) {
  environment[variable] = value;
  return *this;
}

RunOptions& RunOptions::unset(const std::string& variable) {
  environment.erase(variable);
  return *this;
}

void RunningProgram::kill() {
  ::kill(_init, SIGKILL);
  finish();
}

RunResult RunningProgram::finish() {
  RunResult result;
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + _limit;
  bool outOpen = _out >= 0, errOpen = true, reportOpen = true;
  std::string report;
  bool late = false;
  while (outOpen || errOpen || reportOpen) {
    pollfd watched[] = {{outOpen ? _out : -1, POLLIN, 0},
                        {errOpen ? _err : -1, POLLIN, 0},
                        {reportOpen ? _report : -1, POLLIN, 0},
                        {_log, POLLIN, 0}};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    if (poll(watched, 4, static_cast<int>(std::max<long>(left.count(), 0))) == 0) {
      late = true;
      ::kill(_init, SIGKILL);
      break;
    }
    if (watched[0].revents != 0) drain(_out, result.out, outOpen);
    if (watched[1].revents != 0) drain(_err, result.err, errOpen);
    if (watched[2].revents != 0) drain(_report, report, reportOpen);
    if (watched[3].revents != 0) drainLog(_log, result.systemLog);
  }
  waitpid(_init, nullptr, 0);
  if (_log >= 0) drainLog(_log, result.systemLog);
  for (const int descriptor : {_out, _err, _report, _log}) close(descriptor);
  int status = 0;
  if (!late && report.size() == sizeof status) {
    std::memcpy(&status, report.data(), sizeof status);
    result.status = exitStatus(status);
  }
  return result;
}

void PrintTo(const TraceLine& line, std::ostream* stream) {
  *stream << "<" << line.level << "> " << line.text;
}

std::optional<std::string> CliSandbox::refusal() {
  return world().refusal;
}
bool CliSandbox::hasManyUsers() {
  return world().manyUsers;
}

CliSandbox::CliSandbox() {
  umask(022);
  _root = world().folder + "/" + std::to_string(++world().sandboxes);
  test::makeRootFolders(_root);
  makeFolder("/tmp", 01777);
  _children.emplace(host("/control"));
  if (hasManyUsers()) {
    giveTo("/Users/alice", kAlice, kAlice);
    giveTo("/Users/bob", kBob, kBob);
  }
  writeUserDatabase(true);
}

CliSandbox::~CliSandbox() {
  for (const std::string& folder : _mounts) umount2(folder.c_str(), MNT_DETACH);
  std::error_code ignored;
  fs::remove_all(_root, ignored);
}

RunningProgram CliSandbox::start(const std::vector<std::string>& arguments,
                                 const RunOptions& options) {
  std::vector<std::string> command = {options.program};
  command.insert(command.end(), arguments.begin(), arguments.end());
  int out[2], err[2], report[2];
  if (!openOutput(options, out) || pipe2(err, O_CLOEXEC) != 0 || pipe2(report, O_CLOEXEC) != 0)
    std::abort();
  const int input = inputFrom(options.input);
  const int log = options.systemLog ? listenToSystemLog() : -1;
  if (options.brokenOutput) close(out[0]);
  RunningProgram program;
  program._init = static_cast<pid_t>(
      syscall(SYS_clone, CLONE_NEWPID | CLONE_NEWNS | SIGCHLD, nullptr, nullptr, nullptr, nullptr));
  if (program._init == 0) beInit(_root, command, options, {input, out[1], err[1], report[1]});
  for (const int descriptor : {input, out[1], err[1], report[1]}) close(descriptor);
  program._out = options.brokenOutput ? -1 : out[0];
  program._err = err[0];
  program._report = report[0];
  program._limit = options.limit;
  program._log = log;
  return program;
}

RunResult CliSandbox::run(const std::vector<std::string>& arguments, const RunOptions& options) {
  return start(arguments, options).finish();
}

void CliSandbox::writeFile(const std::string& path, std::string_view bytes, mode_t mode) const {
  fs::create_directories(fs::path(host(path)).parent_path());
  std::ofstream(host(path), std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  setMode(path, mode);
}

void CliSandbox::makeFolder(const std::string& path, mode_t mode) const {
  const mode_t before = umask(022);
  fs::create_directories(host(path));
  umask(before);
  setMode(path, mode);
}

void CliSandbox::makeLink(const std::string& path, const std::string& target) const {
  fs::create_directories(fs::path(host(path)).parent_path());
  fs::create_symlink(target, host(path));
}

void CliSandbox::makePipe(const std::string& path) const {
  fs::create_directories(fs::path(host(path)).parent_path());
  mkfifo(host(path).c_str(), 0644);
}

void CliSandbox::giveTo(const std::string& path, uid_t owner, gid_t group) const {
  EXPECT_EQ(0, lchown(host(path).c_str(), owner, group)) << path;
}

void CliSandbox::setMode(const std::string& path, mode_t mode) const {
  EXPECT_EQ(0, chmod(host(path).c_str(), mode)) << path;
}

void CliSandbox::limitSpace(const std::string& folder, std::size_t bytes) {
  mountDisk(folder, "size=" + std::to_string(bytes));
}

void CliSandbox::limitEntries(const std::string& folder, std::size_t number) {
  mountDisk(folder, "nr_inodes=" + std::to_string(number));
}

void CliSandbox::mountDisk(const std::string& folder, const std::string& limit) {
  const std::string options = "mode=0755," + limit;
  ASSERT_EQ(0, mount("tmpfs", host(folder).c_str(), "tmpfs", MS_NODEV, options.c_str()));
  _mounts.push_back(host(folder));
}

void CliSandbox::makeReadOnly(const std::string& folder) {
  const std::string path = host(folder);
  ASSERT_EQ(0, mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr));
  _mounts.push_back(path);
  constexpr unsigned long kFlags = MS_BIND | MS_REMOUNT | MS_RDONLY | MS_NODEV;
  ASSERT_EQ(0, mount(nullptr, path.c_str(), nullptr, kFlags, nullptr));
}

void CliSandbox::fillSpace(const std::string& folder) const {
  const int file = open(host(folder + "/filler").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
  const std::string block(4096, 'f');
  while (write(file, block.data(), block.size()) > 0) continue;
  close(file);
}

void CliSandbox::remove(const std::string& path) const {
  fs::remove_all(host(path));
}

bool CliSandbox::exists(const std::string& path) const {
  return fs::exists(fs::symlink_status(host(path)));
}
bool CliSandbox::isFolder(const std::string& path) const {
  return fs::symlink_status(host(path)).type() == fs::file_type::directory;
}
bool CliSandbox::isRegular(const std::string& path) const {
  return fs::symlink_status(host(path)).type() == fs::file_type::regular;
}
bool CliSandbox::isLink(const std::string& path) const {
  return fs::symlink_status(host(path)).type() == fs::file_type::symlink;
}

std::optional<std::string> CliSandbox::readFile(const std::string& path) const {
  if (!isRegular(path)) return std::nullopt;
  std::ifstream file(host(path), std::ios::binary);
  return std::string{std::istreambuf_iterator<char>(file), {}};
}

std::string CliSandbox::linkTarget(const std::string& path) const {
  std::error_code ignored;
  return fs::read_symlink(host(path), ignored).string();
}

Ownership CliSandbox::ownership(const std::string& path) const {
  struct stat status {};
  EXPECT_EQ(0, lstat(host(path).c_str(), &status)) << path;
  return {status.st_uid, status.st_gid, static_cast<mode_t>(status.st_mode & 07777)};
}

std::vector<std::string> CliSandbox::list(const std::string& folder) const {
  std::vector<std::string> names;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(host(folder), ignored))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> CliSandbox::entriesNamed(const std::string& prefix) const {
  std::vector<std::string> found;
  std::error_code ignored;
  for (const auto& entry : fs::recursive_directory_iterator(_root, ignored))
    if (entry.path().filename().string().rfind(prefix, 0) == 0)
      found.push_back(entry.path().string().substr(_root.size()));
  return found;
}

std::map<std::string, std::string> CliSandbox::tree(const std::string& folder) const {
  std::map<std::string, std::string> entries;
  std::error_code ignored;
  for (const auto& entry : fs::recursive_directory_iterator(host(folder), ignored)) {
    struct stat status {};
    lstat(entry.path().c_str(), &status);
    std::ostringstream text;
    text << kindOf(status) << " " << std::oct << (status.st_mode & 07777) << std::dec << " "
         << status.st_uid << ":" << status.st_gid << " ";
    const std::string seen = entry.path().string().substr(_root.size());
    if (S_ISREG(status.st_mode)) text << *readFile(seen);
    if (S_ISLNK(status.st_mode)) text << linkTarget(seen);
    entries[seen.substr(folder.size())] = text.str();
  }
  return entries;
}

void CliSandbox::installChild(const std::string& path, mode_t mode) const {
  writeFile(path, std::string("#!") + kChild + "\n", mode);
}

void CliSandbox::copyChildProgram(const std::string& path) const {
  fs::create_directories(fs::path(host(path)).parent_path());
  fs::copy_file(test::recordedChild(), host(path));
  setMode(path, 0755);
}

void CliSandbox::script(const std::string& role, const ChildScript& script) const {
  _children->script(role, script.text());
}

void CliSandbox::script(const std::string& role, int start, const ChildScript& script) const {
  _children->script(role, start, script.text());
}

std::vector<ChildRecord> CliSandbox::children() const {
  return _children->records();
}

std::vector<ChildRecord> CliSandbox::children(const std::string& role) const {
  return _children->records(role);
}

std::vector<TraceLine> CliSandbox::trace() const {
  std::vector<TraceLine> lines;
  std::istringstream text(readFile("/tmp/install_trace.log").value_or(""));
  for (std::string line; std::getline(text, line);) {
    const auto parsed = traceLine(line);
    EXPECT_TRUE(parsed.has_value()) << "not a trace line: " << line;
    if (parsed) lines.push_back(*parsed);
  }
  return lines;
}

std::vector<std::string> CliSandbox::texts(std::string_view level) const {
  std::vector<std::string> found;
  for (const TraceLine& line : trace())
    if (level.empty() || line.level == level) found.push_back(line.text);
  return found;
}

std::vector<TraceLine> CliSandbox::traceWithoutProcesses() const {
  std::vector<TraceLine> lines = trace();
  std::erase_if(lines, [](const TraceLine& line) { return line.text.rfind(">>>> ", 0) == 0; });
  return lines;
}

int CliSandbox::listenToSystemLog() const {
  const int listener = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  host("/dev/log").copy(address.sun_path, sizeof address.sun_path - 1);
  EXPECT_EQ(0, bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  EXPECT_EQ(0, chmod(host("/dev/log").c_str(), 0666));
  return listener;
}

void CliSandbox::writeUserDatabase(bool withAdmin) const {
  test::writeUserDatabase(_root, withAdmin);
}

}  // namespace installer::cli
