#include "support/linux/PrivateRoot.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "support/ChildFolder.h"

namespace installer::test {

namespace fs = std::filesystem;

namespace {

bool writeWhole(const char* path, const std::string& text) {
  const int file = open(path, O_WRONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool done = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(file);
  return done;
}

// Real root needs no user namespace and keeps all user ids; anybody else becomes the root of one.
bool enterNamespaces() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (user == 0 && unshare(CLONE_NEWNS) == 0) return true;
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  writeWhole("/proc/self/setgroups", "deny");
  return writeWhole("/proc/self/uid_map", "0 " + std::to_string(user) + " 1\n") &&
         writeWhole("/proc/self/gid_map", "0 " + std::to_string(group) + " 1\n");
}

void bindReadOnly(const std::string& source, const std::string& target) {
  if (mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
    giveUp("bind " + source);
  struct statvfs status {};
  statvfs(target.c_str(), &status);
  unsigned long flags = MS_BIND | MS_REMOUNT | MS_RDONLY;
  if ((status.f_flag & ST_NOSUID) != 0) flags |= MS_NOSUID;
  if ((status.f_flag & ST_NODEV) != 0) flags |= MS_NODEV;
  (void)mount(nullptr, target.c_str(), nullptr, flags, nullptr);  // stays writable then
}

void bindFile(const std::string& source, const std::string& target) {
  if (access(source.c_str(), F_OK) != 0) return;
  close(open(target.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0755));
  bindReadOnly(source, target);
}

void bindFolder(const std::string& source, const std::string& target) {
  fs::create_directories(target);
  bindReadOnly(source, target);
}

// A node of the root's own where one can be made and used: what a run hands over must be nothing of
// the machine's.
void addDevice(const std::string& path, const std::string& root) {
  const std::string inside = root + path;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return;
  if (mknod(inside.c_str(), S_IFCHR | 0666, status.st_rdev) == 0) {
    const int device = open(inside.c_str(), O_RDONLY | O_CLOEXEC);
    if (device >= 0) return (void)close(device);
    unlink(inside.c_str());
  }
  bindFile(path, inside);
}

// The folders of shared libraries; on most systems those of the root are links into /usr.
void bindLibraries(const std::string& root) {
  for (const char* folder : {"/usr/lib", "/usr/lib64", "/usr/lib32"})
    if (fs::is_directory(folder)) bindFolder(folder, root + folder);
  for (const char* folder : {"/lib", "/lib64", "/lib32", "/bin"}) {
    std::error_code ignored;
    if (fs::is_symlink(folder)) {
      fs::create_symlink(fs::read_symlink(folder), root + folder, ignored);
    } else if (fs::is_directory(folder)) {
      bindFolder(folder, root + folder);
    }
  }
}

void bindCountedTree(const std::string& root) {
  const std::string tree = countedTree();
  if (tree.empty()) return;
  const std::string inside = root + tree;
  fs::create_directories(inside);
  const unsigned long flags = MS_BIND | MS_REC;
  (void)mount(tree.c_str(), inside.c_str(), nullptr, flags, nullptr);  // no counters then
}

void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
  if (chmod(path.c_str(), 0644) != 0) giveUp("write " + path);
}

}  // namespace

// What tests empty and hand over would take the tree with it.
std::string countedTree() {
  const std::string tree = HOTFIX_COUNTED_TREE;
  for (const std::string_view folder :
       {"/tmp/", "/root/", "/Users/", "/Applications/", "/Library/"})
    if (tree.starts_with(folder)) return {};
  return tree;
}

void giveUp(const std::string& what) {
  const std::string line = "sandbox: " + what + ": " + strerror(errno) + "\n";
  (void)!write(2, line.data(), line.size());  // nobody else to tell
  _exit(126);
}

std::optional<std::string> enterPrivateMounts(const std::string& folder) {
  if (!enterNamespaces())
    return "no mount namespace (run as root, or allow user namespaces): " +
           std::string(strerror(errno));
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("tmpfs", folder.c_str(), "tmpfs", 0, "mode=0755") != 0)
    return "no private file system: " + std::string(strerror(errno));
  return std::nullopt;
}

bool canGiveAway(const std::string& folder) {
  const std::string probe = folder + "/probe";
  const int file = open(probe.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  const bool given = file >= 0 && fchown(file, kAlice, kAdmin) == 0;
  close(file);
  unlink(probe.c_str());
  return given;
}

void makeRootFolders(const std::string& root) {
  for (const char* folder :
       {"", "/usr", "/usr/bin", "/usr/sbin", "/usr/libexec", "/etc", "/dev", "/proc", "/Library",
        "/Applications", "/Users", "/Users/alice", "/Users/bob", "/Volumes", "/control", "/root"})
    mkdir((root + folder).c_str(), 0755);
  writeText(root + "/etc/nsswitch.conf", "passwd: files\ngroup: files\n");
}

void writeUserDatabase(const std::string& root, bool withAdmin) {
  writeText(root + "/etc/passwd",
            "root:x:0:0:root:/root:/bin/sh\n"
            "alice:x:1000:1000:Alice:/Users/alice:/bin/sh\n"
            "bob:x:1001:1001:Bob:/Users/bob:/bin/sh\n");
  writeText(root + "/etc/group", std::string("root:x:0:\n") +
                                     (withAdmin ? "admin:x:80:alice\n" : "") +
                                     "alice:x:1000:\nbob:x:1001:\n");
}

void mountRoot(const std::string& root, const std::string& program) {
  bindLibraries(root);
  bindCountedTree(root);
  for (const char* device : {"null", "zero", "full", "random", "urandom"})
    addDevice(std::string("/dev/") + device, root);
  bindFile("/bin/sh", root + "/usr/bin/sh");
  bindFile("/etc/ld.so.cache", root + "/etc/ld.so.cache");
  bindFile(program, root + kProgramInRoot);
  bindFile(HOTFIX_BINARY_DIR "/hotfixctl", root + kControlInRoot);
  bindFile(recordedChild(), root + kChildInRoot);
  bindFile(HOTFIX_BINARY_DIR "/preload/AllocationFault.so", root + kAllocationFaultInRoot);
  bindFile(HOTFIX_BINARY_DIR "/preload/KillAtName.so", root + kKillAtNameInRoot);
  const std::string proc = root + "/proc";
  if (mount("proc", proc.c_str(), "proc", 0, nullptr) != 0 &&
      mount("/proc", proc.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
    giveUp("mount /proc");
}

}  // namespace installer::test
