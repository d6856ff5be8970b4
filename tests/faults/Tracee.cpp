#include "faults/Tracee.h"

#include <elf.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace fs = std::filesystem;

namespace {

// Seconds until a program counts as hanging: more than a run takes on a machine with much to do.
constexpr unsigned kLimit = 60;
constexpr int kCallStop = SIGTRAP | 0x80;
constexpr std::uint64_t kBreakpoint = 0xCC;

volatile sig_atomic_t timeIsUp = 0;

void tellThatTimeIsUp(int /*signal*/) {
  timeIsUp = 1;
}

// From now on a wait ends when the time is up.
void setTimer() {
  struct sigaction action {};
  action.sa_handler = tellThatTimeIsUp;
  sigaction(SIGALRM, &action, nullptr);
  timeIsUp = 0;
  alarm(kLimit);
}

// False when the time is up.
bool waitFor(pid_t process, int& status) {
  while (waitpid(process, &status, __WALL) != process) {
    if (errno != EINTR || timeIsUp != 0) return false;
  }
  return true;
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
  result.push_back(nullptr);
  return result;
}

[[noreturn]] void become(const Start& start) {
  const int nothing = open("/dev/null", O_RDWR);
  for (const int descriptor : {0, 1, 2}) dup2(nothing, descriptor);
  if (nothing > 2) close(nothing);
  umask(022);
  if (chroot(start.root.c_str()) != 0 || chdir("/") != 0) _exit(126);
  std::vector<std::string> command{start.program};
  command.insert(command.end(), start.arguments.begin(), start.arguments.end());
  std::vector<std::string> variables;
  for (const auto& [name, value] : start.environment) variables.push_back(name + "=" + value);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  execve(command[0].c_str(), pointers(command).data(), pointers(variables).data());
  _exit(126);
}

std::array<std::uint64_t, 6> argumentsOf(const user_regs_struct& registers) {
  return {registers.rdi, registers.rsi, registers.rdx, registers.r10, registers.r8, registers.r9};
}

void setArgument(user_regs_struct& registers, int position, std::uint64_t value) {
  unsigned long long* const places[] = {&registers.rdi, &registers.rsi, &registers.rdx,
                                        &registers.r10, &registers.r8,  &registers.r9};
  *places[position] = value;
}

}  // namespace

Tracee::Tracee(const Start& start, std::uint64_t distanceOfMain) : _root(start.root) {
  setTimer();
  _process = fork();
  if (_process == 0) become(start);
  int status = 0;
  if (!waitFor(_process, status) || !WIFSTOPPED(status)) test::giveUp("follow " + start.program);
  ptrace(PTRACE_SETOPTIONS, _process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  runToMain(distanceOfMain);
}

Tracee::~Tracee() {
  if (_running) kill();
  alarm(0);
}

// A breakpoint stands in the first byte of main() until it is reached.
void Tracee::runToMain(std::uint64_t distance) {
  const std::uint64_t main = entryPoint() + distance;
  const std::uint64_t code = numberAt(main);
  ptrace(PTRACE_POKETEXT, _process, main, (code & ~std::uint64_t{0xFF}) | kBreakpoint);
  if (!resume(PTRACE_CONT)) return;
  ptrace(PTRACE_POKETEXT, _process, main, code);
  user_regs_struct registers{};
  ptrace(PTRACE_GETREGS, _process, nullptr, &registers);
  registers.rip = main;
  ptrace(PTRACE_SETREGS, _process, nullptr, &registers);
}

std::uint64_t Tracee::entryPoint() const {
  std::ifstream stream(_root + "/proc/" + std::to_string(_process) + "/auxv", std::ios::binary);
  Elf64_auxv_t entry{};
  while (stream.read(reinterpret_cast<char*>(&entry), sizeof entry))
    if (entry.a_type == AT_ENTRY) return entry.a_un.a_val;
  return 0;
}

void Tracee::ended(int status) {
  _running = false;
  if (WIFSIGNALED(status)) _end.signal = WTERMSIG(status);
  if (WIFEXITED(status)) _end.status = WEXITSTATUS(status);
}

// Lets the program run to its next stop, handing on what signals it gets; false when it has ended.
bool Tracee::resume(int request) {
  long signal = 0;
  while (true) {
    ptrace(static_cast<__ptrace_request>(request), _process, nullptr, signal);
    int status = 0;
    if (!waitFor(_process, status)) {
      _end.late = true;
      kill();
      return false;
    }
    if (!WIFSTOPPED(status)) {
      ended(status);
      return false;
    }
    if (WSTOPSIG(status) == kCallStop || (request == PTRACE_CONT && WSTOPSIG(status) == SIGTRAP))
      return true;
    signal = WSTOPSIG(status);
  }
}

// Lets the program make the call at whose beginning it stands, and gives it the answer wanted.
void Tracee::settle() {
  _inCall = false;
  if (!resume(PTRACE_SYSCALL) || !_answer) return;
  user_regs_struct registers{};
  ptrace(PTRACE_GETREGS, _process, nullptr, &registers);
  registers.rax = static_cast<std::uint64_t>(-static_cast<std::int64_t>(*_answer));
  ptrace(PTRACE_SETREGS, _process, nullptr, &registers);
  _answer.reset();
}

std::optional<Call> Tracee::next() {
  const auto numberAt = [this](std::uint64_t address) { return this->numberAt(address); };
  while (_running) {
    if (_inCall) settle();
    if (!_running || !resume(_isFree ? PTRACE_CONT : PTRACE_SYSCALL) || _isFree) break;
    _inCall = true;
    user_regs_struct registers{};
    ptrace(PTRACE_GETREGS, _process, nullptr, &registers);
    const auto call =
        callOf(static_cast<long>(registers.orig_rax), argumentsOf(registers), numberAt);
    if (call) return call;
  }
  return std::nullopt;
}

std::optional<long> Tracee::nextOfAll() {
  if (_inCall) settle();
  if (!_running || !resume(PTRACE_SYSCALL)) return std::nullopt;
  _inCall = true;
  user_regs_struct registers{};
  ptrace(PTRACE_GETREGS, _process, nullptr, &registers);
  return static_cast<long>(registers.orig_rax);
}

void Tracee::fail(int error) {
  user_regs_struct registers{};
  ptrace(PTRACE_GETREGS, _process, nullptr, &registers);
  registers.orig_rax = ~0ULL;
  ptrace(PTRACE_SETREGS, _process, nullptr, &registers);
  _answer = error;
}

void Tracee::shorten(const Call& call) {
  const std::uint64_t size = call.arguments[static_cast<std::size_t>(call.form->size)];
  user_regs_struct registers{};
  ptrace(PTRACE_GETREGS, _process, nullptr, &registers);
  setArgument(registers, call.form->size, (size + 1) / 2);
  ptrace(PTRACE_SETREGS, _process, nullptr, &registers);
}

void Tracee::kill() {
  ::kill(_process, SIGKILL);
  int status = 0;
  while (waitpid(_process, &status, __WALL) != _process && errno == EINTR) continue;
  while (_running && WIFSTOPPED(status)) waitpid(_process, &status, __WALL);
  ended(status);
}

std::string Tracee::textAt(std::uint64_t address) const {
  std::string text;
  while (address != 0 && text.size() < 4096) {
    char part[256];
    // Not over the end of a page, for the next one may not be there.
    const std::size_t size = std::min<std::size_t>(sizeof part, 4096 - address % 4096);
    const iovec here{part, size};
    const iovec there{reinterpret_cast<void*>(address), size};
    const ssize_t count = process_vm_readv(_process, &here, 1, &there, 1, 0);
    if (count <= 0) break;
    const auto length = strnlen(part, static_cast<std::size_t>(count));
    text.append(part, length);
    if (length < static_cast<std::size_t>(count)) break;
    address += length;
  }
  return text;
}

std::uint64_t Tracee::numberAt(std::uint64_t address) const {
  return static_cast<std::uint64_t>(ptrace(PTRACE_PEEKDATA, _process, address, nullptr));
}

std::string Tracee::descriptorPath(std::uint64_t descriptor) const {
  std::error_code unknown;
  const std::string link = _root + "/proc/" + std::to_string(_process) + "/fd/" +
                           std::to_string(static_cast<int>(descriptor));
  const std::string target = fs::read_symlink(link, unknown).string();
  return target.starts_with(_root) ? target.substr(_root.size()) : target;
}

std::string Tracee::pathAt(const Call& call, int folder, int path) const {
  const std::string name = textAt(call.arguments[static_cast<std::size_t>(path)]);
  if (name.starts_with('/')) return name;
  const auto number =
      folder < 0 ? std::uint64_t(AT_FDCWD) : call.arguments[static_cast<std::size_t>(folder)];
  if (static_cast<int>(number) == AT_FDCWD) return "/" + name;
  const std::string above = descriptorPath(number);
  return name.empty() ? above : above + "/" + name;
}

std::string Tracee::pathOf(const Call& call) const {
  const CallForm& form = *call.form;
  if (form.path >= 0) return pathAt(call, form.folder, form.path);
  if (form.descriptor < 0) return {};
  return descriptorPath(call.arguments[static_cast<std::size_t>(form.descriptor)]);
}

std::string Tracee::otherPathOf(const Call& call) const {
  const CallForm& form = *call.form;
  return form.otherPath < 0 ? std::string() : pathAt(call, form.otherFolder, form.otherPath);
}

std::string Tracee::described(const Call& call) const {
  std::string text = std::string(call.form->name) + "(" + pathOf(call);
  if (const std::string other = otherPathOf(call); !other.empty()) text += ", " + other;
  return text + ")";
}

std::optional<std::string> followingRefused() {
  const pid_t child = fork();
  if (child == 0) {
    const bool granted = ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
    _exit(granted ? 0 : errno);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return std::nullopt;
  return "programs can not be followed (ptrace): " + std::string(strerror(WEXITSTATUS(status)));
}

}  // namespace installer::faults
