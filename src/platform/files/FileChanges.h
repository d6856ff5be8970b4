#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileOperation.h"
#include "platform/files/TemporaryNames.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Every change that the file manager makes to the disk, one call each. All answer 0 or the system's
// error number. Before each the door is asked: a number other than 0 is answered instead of the
// change.
class FileChanges {
 public:
  using Door = std::function<int(FileOperation)>;

  explicit FileChanges(Door refusal);

  // A name that is not taken in the folder and cannot be guessed. Changes nothing.
  std::string freeTemporaryName(int folder) { return _names.next(folder); }

  // New entries; EEXIST when the name is taken. The creation mask applies to the modes. Nothing new
  // is begun once a signal has asked the process to end: they throw Interrupted then.
  [[nodiscard]] int createFile(int folder, const std::string& name, mode_t mode, Descriptor& file);
  [[nodiscard]] int makeFolder(int folder, const std::string& name, mode_t mode);
  [[nodiscard]] int makeLink(int folder, const std::string& name, const std::string& target);
  // Of the entry itself, should it be a link.
  [[nodiscard]] int makeSecondName(int folder, const std::string& name, int otherFolder,
                                   const std::string& otherName);

  [[nodiscard]] int write(int file, std::string_view bytes);
  // From the offset of `from` to its end, which is where `size` bytes are copied; for a file that
  // does not tell its size, which is 0 then, and for one that has become another, where no more
  // comes.
  [[nodiscard]] int copyBytes(int from, int to, std::size_t size);
  [[nodiscard]] int truncate(int file);

  [[nodiscard]] int flush(int file);
  [[nodiscard]] int flushFolder(
      int folder);  // a file system that cannot flush folders counts as done
  [[nodiscard]] int flushFileSystem(int folder);

  // Within one folder.
  [[nodiscard]] int rename(int folder, const std::string& from, const std::string& to);
  [[nodiscard]] int renameKeepingExisting(int folder, const std::string& from,
                                          const std::string& to);

  [[nodiscard]] int unlink(int folder, const std::string& name);
  [[nodiscard]] int removeEmptyFolder(int folder, const std::string& name);

  // On files and folders that are open.
  [[nodiscard]] int changeOwner(int file, uid_t owner, gid_t group);
  [[nodiscard]] int changeMode(int file, mode_t mode);

  // On descriptors that only name an entry.
  [[nodiscard]] int changeOwnerOfItem(int item, uid_t owner, gid_t group);
  [[nodiscard]] int changeModeOfItem(int item, mode_t mode);

  // On an entry, which is no link, of a folder where nobody else can exchange it.
  [[nodiscard]] int changeOwnerOfEntry(int folder, const std::string& name, uid_t owner,
                                       gid_t group);
  [[nodiscard]] int changeModeOfEntry(int folder, const std::string& name, mode_t mode);

 private:
  [[nodiscard]] int copyInBlocks(int from, int to, std::size_t size);

  Door _refusal;
  TemporaryNames _names;
  std::vector<char> _block;  // for bytes that pass through our own memory, kept for the next file
};

}  // namespace installer
