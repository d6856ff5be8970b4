#pragma once

#include <sys/stat.h>
#include <sys/types.h>
#include <time.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The few calls that every system spells in its own way. Like the calls behind them, they answer
// -1 and set errno on failure.
namespace installer::syscalls {

// Renames within or between open folders; EEXIST when something stands at the new name.
[[nodiscard]] int renameKeepingExisting(int fromFolder, const char* from, int toFolder,
                                        const char* to);

// Writes everything that is pending on the file system of the open folder.
[[nodiscard]] int flushFileSystem(int folder);

// Writes what is pending for one open file or folder down to the medium.
[[nodiscard]] int flushFile(int file);

// Moves up to `length` bytes between the files' offsets inside the kernel; 0 at the end of `from`.
// Systems or file systems without such a call fail.
ssize_t copyRange(int from, int to, std::size_t length);

// Gives `to` the extended attributes and the access list where copies carry them on this system,
// as far as both file systems keep them. The mark of what came over the network is not passed on.
// The owner may read and write `to` then, whatever its mode was.
void copyAttributes(int from, int to);

// The mode that a copy is made with which is to have `mode` in the end: that one, unless an access
// list, which comes later, may close the copy to somebody whom the mode lets in.
mode_t modeToBeginWith(mode_t mode);

// A descriptor that only names the entry, be it a link, pipe or device: nothing is opened. A system
// may have none for sockets, pipes and devices: EOPNOTSUPP.
[[nodiscard]] int openItem(int folder, const char* name);

// The target of the link that a descriptor of openItem() names; its length, cut at `size` bytes.
ssize_t readLink(int item, char* target, std::size_t size);

// On a descriptor of openItem(). The mode of a link cannot be changed.
[[nodiscard]] int changeOwnerOfItem(int item, uid_t owner, gid_t group);
[[nodiscard]] int changeModeOfItem(int item, mode_t mode);

// Opens a folder for listing and as an anchor; links on the way, the last component's too, are
// followed as long as none leads out of the open folder `above`. EXDEV when one does or is
// absolute, ENOSYS where the system has no such call.
[[nodiscard]] int openFolderBeneath(int above, const char* path);

// A descriptor that only names what the path leads to, on the same terms.
[[nodiscard]] int openItemBeneath(int above, const char* path);

// A descriptor that only names the folder at the path, which is looked up from the open folder
// `start` and, with Beneath::yes, does not leave it. ELOOP when there is any link on the way or in
// the folder's place, ENOSYS where the system has no such call.
enum class Beneath { no, yes };
[[nodiscard]] int openFolderWithoutLinks(int start, const char* path, Beneath beneath);

// The folder above an open folder; the root is above itself.
[[nodiscard]] int openFolderAbove(int folder);

// The path, links followed, by which the kernel tells of the file. nullopt with errno set.
[[nodiscard]] std::optional<std::string> reportedPath(const std::string& path);

timespec modificationTime(const struct stat& status);

// Whether the bytes are those that a program of this system begins with. Scripts are none.
bool isProgram(std::string_view beginning);

// Whether what is made in a folder of this mode gets the folder's group instead of its maker's.
bool takesGroupOfFolder(mode_t folder);

}  // namespace installer::syscalls
