#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/ChildFolder.h"
#include "support/ChildScript.h"
#include "support/linux/PrivateRoot.h"

namespace installer::cli {

using test::ChildRecord;
using test::ChildScript;

// How the program is started. The defaults are those of a run below a graphical installer: root,
// with the console user in USER.
struct RunOptions {
  std::string program = test::kProgramInRoot;
  std::map<std::string, std::string> environment = {
      {"HOME", "/Users/alice"}, {"USER", "alice"}, {"PATH", "/usr/bin:/bin"}, {"TZ", "UTC"}};
  std::vector<int> closedDescriptors;
  mode_t mask = 022;
  std::optional<uid_t> user;  // user and group id to run as; root when absent
  std::string directory = "/";
  std::string input;                                 // standard input holds this and ends
  std::vector<std::vector<std::string>> background;  // programs that run all the while
  std::string awaited;                               // path that must exist before the start
  std::chrono::milliseconds limit{60'000};           // for a machine that has much else to do
  std::map<int, std::uint64_t> limits;               // RLIMIT_FSIZE, say, -> soft and hard limit
  std::vector<int> ignoredSignals;
  std::vector<int> blockedSignals;
  bool systemLog = false;       // whether a system log listens at /dev/log
  bool ownRootMount = false;    // whether the root is a mount, as a machine's is
  bool brokenOutput = false;    // nobody reads what comes to standard output
  unsigned short terminal = 0;  // standard output is a terminal of so many columns; 0: it is none

  RunOptions& set(const std::string& variable, const std::string& value);
  RunOptions& unset(const std::string& variable);
};

struct RunResult {
  int status = -1;  // exit status; 128 and the signal's number for a killed run; -1 after the limit
  std::string out;
  std::string err;
  std::vector<std::string> systemLog;  // what came to /dev/log, each with its header
};

// A started program. finish() must follow.
class RunningProgram {
 public:
  RunResult finish();
  // Kills it and everything it started instead; its status counts for nothing.
  void kill();

 private:
  friend class CliSandbox;
  pid_t _init = -1;  // process 1 of the run's own process list; everything ends with it
  int _out = -1;
  int _err = -1;
  int _report = -1;  // receives the wait status
  int _log = -1;     // the system log's socket, -1 without one
  std::chrono::milliseconds _limit{0};
};

struct TraceLine {
  std::string level;
  std::string text;
  friend bool operator==(const TraceLine&, const TraceLine&) = default;
};
void PrintTo(const TraceLine& line, std::ostream* stream);

struct Ownership {
  uid_t owner = 0;
  gid_t group = 0;
  mode_t mode = 0;
};

// A root folder of its own for one test, with its own /tmp, /Library, /Applications, /Users, /etc,
// /dev, /usr/sbin and /usr/libexec and nothing of the machine but the shared libraries, a shell and
// the program. Paths in this interface are the ones that the program sees.
class CliSandbox {
 public:
  static constexpr const char* kProgram = test::kProgramInRoot;
  static constexpr const char* kControl = test::kControlInRoot;
  static constexpr const char* kChild = test::kChildInRoot;
  static constexpr const char* kAllocationFault = test::kAllocationFaultInRoot;
  static constexpr const char* kKillAtName = test::kKillAtNameInRoot;
  static constexpr uid_t kAlice = test::kAlice;
  static constexpr uid_t kBob = test::kBob;
  static constexpr gid_t kAdmin = test::kAdmin;

  // Whether this process got a mount namespace of its own; the reason when it did not.
  static std::optional<std::string> refusal();
  // Whether other user ids than our own can be taken and given away.
  static bool hasManyUsers();

  CliSandbox();
  CliSandbox(const CliSandbox&) = delete;
  CliSandbox& operator=(const CliSandbox&) = delete;
  ~CliSandbox();

  RunningProgram start(const std::vector<std::string>& arguments, const RunOptions& options = {});
  RunResult run(const std::vector<std::string>& arguments, const RunOptions& options = {});

  // --- Files -------------------------------------------------------------------------------------

  // The path as this process sees it.
  std::string host(const std::string& path) const { return _root + path; }

  // Missing folders above are made, with mode 0755.
  void writeFile(const std::string& path, std::string_view bytes, mode_t mode = 0644) const;
  void makeFolder(const std::string& path, mode_t mode = 0755) const;
  void makeLink(const std::string& path, const std::string& target) const;
  void makePipe(const std::string& path) const;
  void giveTo(const std::string& path, uid_t owner, gid_t group) const;
  void setMode(const std::string& path, mode_t mode) const;
  // Puts a file system of that size over the folder, which must exist, until the test ends.
  void limitSpace(const std::string& folder, std::size_t bytes);
  // The same with so many entries at most, the folder itself included.
  void limitEntries(const std::string& folder, std::size_t number);
  // From now on nothing below the folder, which must exist, can be changed, until the test ends.
  void makeReadOnly(const std::string& folder);
  // Fills the file system below the folder to the last byte, with a file "filler".
  void fillSpace(const std::string& folder) const;
  // With everything below a folder; nothing happens when nothing is there.
  void remove(const std::string& path) const;

  // The entry itself, be it a dangling link.
  bool exists(const std::string& path) const;
  bool isFolder(const std::string& path) const;
  bool isRegular(const std::string& path) const;
  bool isLink(const std::string& path) const;
  // Of a regular file; nullopt for anything else. Links are not followed.
  std::optional<std::string> readFile(const std::string& path) const;
  std::string linkTarget(const std::string& path) const;
  Ownership ownership(const std::string& path) const;
  mode_t mode(const std::string& path) const { return ownership(path).mode; }
  // Names, sorted.
  std::vector<std::string> list(const std::string& folder) const;
  // Every entry of the whole root whose name begins so.
  std::vector<std::string> entriesNamed(const std::string& prefix) const;
  // Every entry below the folder: relative path -> kind, mode, owner and content as one text.
  std::map<std::string, std::string> tree(const std::string& folder) const;

  // --- Children ----------------------------------------------------------------------------------

  // Puts a program played by the child program at the path; its role is the path's last component.
  void installChild(const std::string& path, mode_t mode = 0755) const;
  // Puts a copy of the child program there, for programs whose own path in the process list counts.
  void copyChildProgram(const std::string& path) const;
  void script(const std::string& role, const ChildScript& script) const;
  void script(const std::string& role, int start, const ChildScript& script) const;
  // In the order of the starts.
  std::vector<ChildRecord> children() const;
  std::vector<ChildRecord> children(const std::string& role) const;

  // --- What a run leaves -------------------------------------------------------------------------

  // Lines of the trace file; a line of another form fails the test.
  std::vector<TraceLine> trace() const;
  // The texts alone, at one level ("Error", ...), or at all.
  std::vector<std::string> texts(std::string_view level = {}) const;
  // The same without the lines that list the machine's processes.
  std::vector<TraceLine> traceWithoutProcesses() const;

  // The user database: users alice and bob, group "admin" with number 80 unless told otherwise.
  void writeUserDatabase(bool withAdmin) const;

 private:
  int listenToSystemLog() const;
  void mountDisk(const std::string& folder, const std::string& limit);

  std::string _root;
  std::optional<test::ChildFolder> _children;  // once there is a root
  std::vector<std::string> _mounts;
};

}  // namespace installer::cli
