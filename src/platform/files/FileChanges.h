#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileOperation.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Every change that the file manager makes to the disk, one call each. All answer 0 or the system's
// error number. Before each the door is asked: a number other than 0 is answered instead of the
// change.
class FileChanges {
 public:
  using Door = std::function<int(FileOperation)>;

  static constexpr std::string_view kTemporaryPrefix = ".hotfix-";

  explicit FileChanges(Door refusal);

  // A name that is not taken in the folder and cannot be guessed. Changes nothing.
  static std::string freeTemporaryName(int folder);

  // New entries; EEXIST when the name is taken. The creation mask applies to the modes.
  int createFile(int folder, const std::string& name, mode_t mode, Descriptor& file);
  int makeFolder(int folder, const std::string& name, mode_t mode);
  int makeLink(int folder, const std::string& name, const std::string& target);

  int write(int file, std::string_view bytes);
  int copyBytes(int from, int to);  // from the offset of `from` to its end
  int truncate(int file);

  int flush(int file);
  int flushFolder(int folder);  // a file system that cannot flush folders counts as done
  int flushFileSystem(int folder);

  // Within one folder.
  int rename(int folder, const std::string& from, const std::string& to);
  int renameKeepingExisting(int folder, const std::string& from, const std::string& to);

  int unlink(int folder, const std::string& name);
  int removeEmptyFolder(int folder, const std::string& name);

  // On files and folders that are open.
  int changeOwner(int file, uid_t owner, gid_t group);
  int changeMode(int file, mode_t mode);

  // On descriptors that only name an entry.
  int changeOwnerOfItem(int item, uid_t owner, gid_t group);
  int changeModeOfItem(int item, mode_t mode);

 private:
  int copyInBlocks(int from, int to);

  Door _refusal;
  std::vector<char> _block;  // for bytes that pass through our own memory, kept for the next file
};

}  // namespace installer
