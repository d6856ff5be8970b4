#include "PrivateRoot.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Fuzzed.h"

namespace installer::fuzz {

namespace {

constexpr int kSkipped = 77;
constexpr std::array kSignals = {SIGABRT, SIGALRM, SIGBUS, SIGFPE, SIGILL, SIGSEGV};

bool isInside = false;
int outerRoot = -1;
int outerFolder = -1;  // that the process worked in
int innerRoot = -1;
std::array<struct sigaction, kSignals.size()> handlers;  // the fuzzer's own

// Not even a failure may go on in the wrong root.
void orEnd(int result) {
  if (result != 0) _exit(1);
}

void moveOut() {
  if (!isInside) return;
  isInside = false;
  orEnd(fchdir(outerRoot));
  orEnd(chroot("."));
  orEnd(fchdir(outerFolder));
}

void moveIn() {
  orEnd(fchdir(innerRoot));
  orEnd(chroot("."));
  isInside = true;
}

// The alarm comes every few seconds, and the input goes on behind it.
void handleOutside(int number, siginfo_t* info, void* context) {
  const bool wasInside = isInside;
  moveOut();
  for (std::size_t at = 0; at < kSignals.size(); ++at)
    if (kSignals[at] == number) handlers[at].sa_sigaction(number, info, context);
  if (wasInside) moveIn();
}

void takeSignals() {
  for (std::size_t at = 0; at < kSignals.size(); ++at) {
    struct sigaction& handler = handlers[at];
    orEnd(sigaction(kSignals[at], nullptr, &handler));
    if ((handler.sa_flags & SA_SIGINFO) == 0) continue;
    struct sigaction own = handler;
    own.sa_sigaction = handleOutside;
    orEnd(sigaction(kSignals[at], &own, nullptr));
  }
}

bool writeWhole(const char* path, const std::string& text) {
  const int file = open(path, O_WRONLY | O_CLOEXEC);
  const bool isWritten = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(file);
  return isWritten;
}

// Whoever is not root becomes the root of a user namespace.
bool mayChangeRoot() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (user == 0) return true;
  return unshare(CLONE_NEWUSER) == 0 && writeWhole("/proc/self/setgroups", "deny") &&
         writeWhole("/proc/self/uid_map", "0 " + std::to_string(user) + " 1\n") &&
         writeWhole("/proc/self/gid_map", "0 " + std::to_string(group) + " 1\n");
}

int openFolder(const char* path) {
  return open(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
}

// Removes all that is below the folder, whose descriptor it takes; whether a name had the prefix.
bool removeBelow(int folder, std::string_view prefix) {
  bool isFound = false;
  DIR* listing = fdopendir(folder);
  require(listing != nullptr, "what a run left can be removed");
  while (const dirent* entry = readdir(listing)) {
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    isFound = isFound || name.starts_with(prefix);
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const bool isFolder = entry->d_type == DT_DIR;
    if (isFolder && removeBelow(openat(folder, entry->d_name, kFlags), prefix)) isFound = true;
    unlinkat(folder, entry->d_name, isFolder ? AT_REMOVEDIR : 0);
  }
  closedir(listing);
  return isFound;
}

}  // namespace

PrivateRoot::PrivateRoot() : _path("/dev/shm/hotfix-fuzzed-XXXXXX") {
  if (!mayChangeRoot() || mkdtemp(_path.data()) == nullptr) {
    std::fputs("no folder can be this process's root\n", stderr);
    _exit(kSkipped);
  }
  outerRoot = openFolder("/");
  outerFolder = openFolder(".");
  innerRoot = openFolder(_path.c_str());
  takeSignals();
}

PrivateRoot::~PrivateRoot() {
  rmdir(_path.c_str());
}

void PrivateRoot::enter() {
  moveIn();
}

bool PrivateRoot::leave(std::string_view prefix) {
  require(isInside, "the input is tried in the private root");
  const bool isFound = removeBelow(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC), prefix);
  moveOut();
  return isFound;
}

}  // namespace installer::fuzz

// Called by the sanitizers before they report.
extern "C" void __asan_on_error() {
  installer::fuzz::moveOut();
}

extern "C" void __ubsan_on_report() {
  installer::fuzz::moveOut();
}
