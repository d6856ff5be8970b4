#include "faults/World.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "support/ChildFolder.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace fs = std::filesystem;

namespace {

void writeEntry(const std::string& path, const test::TreeEntry& entry) {
  if (entry.kind == "link") {
    fs::create_symlink(entry.content, path);
  } else if (entry.kind == "folder") {
    mkdir(path.c_str(), 0700);
  } else {
    std::ofstream(path, std::ios::binary) << entry.content;
  }
  const bool owned = lchown(path.c_str(), entry.owner, entry.group) == 0;
  if (!owned || (entry.kind != "link" && chmod(path.c_str(), entry.mode) != 0))
    test::giveUp("write " + path);
}

}  // namespace

const std::vector<std::string>& World::folders() {
  static const std::vector<std::string> all{"/Applications", "/Library",     "/Users",
                                            "/Volumes",      "/java",        "/root",
                                            "/tmp",          "/usr/libexec", "/usr/sbin"};
  return all;
}

World::World(std::string root, const std::string& program) : _root(std::move(root)) {
  umask(022);
  test::makeRootFolders(_root);
  test::writeUserDatabase(_root, true);
  for (const std::string& folder : folders()) fs::create_directory(host(folder));
  const test::ChildFolder children(host("/control"));
  umask(0);
  test::mountRoot(_root, program);
  umask(022);
}

// Only of its own process list is a process the first, and then nobody else's end with it.
void World::endOthers() {
  if (getpid() != 1) test::giveUp("end what runs");
  (void)kill(-1, SIGKILL);  // mostly there is nobody
  while (waitpid(-1, nullptr, __WALL) > 0 || errno == EINTR) continue;
}

void World::fill(const Files& files) const {
  endOthers();
  for (const std::string& folder : folders())
    for (const auto& entry : fs::directory_iterator(host(folder))) fs::remove_all(entry.path());
  for (const auto& [path, entry] : files) writeEntry(host(path), entry);
  for (const auto& entry : fs::directory_iterator(host("/control/records"))) fs::remove(entry);
}

Files World::files() const {
  Files all;
  for (const std::string& folder : folders())
    for (auto& [path, entry] : test::snapshotOf(host(folder)))
      all.emplace(path == "." ? folder : folder + "/" + path, std::move(entry));
  return all;
}

void World::script(const std::map<std::string, std::string>& texts) const {
  fs::remove_all(host("/control/scripts"));
  const test::ChildFolder children(host("/control"));
  for (const auto& [role, text] : texts) children.script(role, text);
}

void World::startIdle(const std::string& program) const {
  int started[2];
  if (pipe2(started, O_CLOEXEC) != 0) test::giveUp("pipe");
  if (fork() == 0) {
    std::string seconds = "3600";
    std::string name = program;
    char* const arguments[] = {name.data(), seconds.data(), nullptr};
    if (chroot(_root.c_str()) == 0) execv(name.c_str(), arguments);
    test::giveUp("start " + program);
  }
  close(started[1]);
  char nothing;
  (void)!read(started[0], &nothing, 1);  // its end tells that the program has been started
  close(started[0]);
}

bool World::waitForOthers() {
  constexpr int kTurns = 20000;
  for (int turn = 0; turn < kTurns; ++turn) {
    const pid_t process = waitpid(-1, nullptr, WNOHANG | __WALL);
    if (process < 0 && errno == ECHILD) return true;
    if (process == 0) usleep(1000);
  }
  return false;
}

}  // namespace installer::faults
