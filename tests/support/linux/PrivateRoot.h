#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace installer::test {

// What whole runs of the program need around them: a mount namespace of this process's own, and in
// it root folders that hold nothing of the machine but the shared libraries, a shell and the
// program.

// The users and the group of such a root.
inline constexpr uid_t kAlice = 1000;
inline constexpr uid_t kBob = 1001;
inline constexpr gid_t kAdmin = 80;

// Takes a mount namespace for this process, and mounts a file system in memory over the folder.
// Nothing, or why that was refused.
std::optional<std::string> enterPrivateMounts(const std::string& folder);

// Whether files in the folder can be given to other user ids than our own.
bool canGiveAway(const std::string& folder);

// The folders of a root, and its user database: users alice and bob, group "admin" where it is
// asked for.
void makeRootFolders(const std::string& root);
void writeUserDatabase(const std::string& root, bool withAdmin);

// The program, its companion and the helper that plays its children, as they are named below a
// root.
inline constexpr const char* kProgramInRoot = "/control/HotfixInstaller";
inline constexpr const char* kControlInRoot = "/control/hotfixctl";  // where it is built
inline constexpr const char* kChildInRoot = "/control/child";
// To be preloaded (LD_PRELOAD); their sources tell by which variables they are told what to do.
inline constexpr const char* kAllocationFaultInRoot = "/control/AllocationFault.so";
inline constexpr const char* kKillAtNameInRoot = "/control/KillAtName.so";

// The build tree, which then lies at its own path in such a root: that of a build that measures
// coverage, for its counters. Empty for any other, and where no counters can be kept.
std::string countedTree();

// Mounts libraries, devices, the process list, the helper and the program of that path below the
// root. Ends the process with status 126 and a line when something is refused.
void mountRoot(const std::string& root, const std::string& program);

// Ends the process with status 126 and a line that says what was refused, with the system's words.
[[noreturn]] void giveUp(const std::string& what);

}  // namespace installer::test
