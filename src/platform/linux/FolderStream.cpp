#include "platform/files/FolderStream.h"

#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace installer {

namespace {

constexpr std::size_t kBlock = std::size_t{32} << 10;  // bytes a call

// The C library's own stream asks two things more of every folder, whose kind and flags are known
// here.
class EntryBlocks : public FolderStream {
 public:
  explicit EntryBlocks(Descriptor folder) : _folder(std::move(folder)) {}

  ListedEntry next() override {
    errno = 0;
    if (_place == _end && !readBlock()) return {};
    const auto* const entry = reinterpret_cast<const dirent64*>(_block.get() + _place);
    _place += entry->d_reclen;
    return {entry->d_name, kindOfListed(entry->d_type)};
  }

  void rewind() override {
    (void)::lseek(_folder.get(), 0, SEEK_SET);  // cannot fail for a folder
    _place = _end;
  }

  int descriptor() const override { return _folder.get(); }

 private:
  // False at the end, and after an error. A folder that has been removed has come to its end.
  bool readBlock() {
    const ssize_t count = ::getdents64(_folder.get(), _block.get(), kBlock);
    if (count == -1 && errno == ENOENT) errno = 0;
    _place = 0;
    _end = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count > 0;
  }

  Descriptor _folder;
  const std::unique_ptr<char[]> _block = std::make_unique_for_overwrite<char[]>(kBlock);
  std::size_t _place = 0;  // of the next entry in the block
  std::size_t _end = 0;
};

}  // namespace

std::unique_ptr<FolderStream> openFolderStream(Descriptor folder) {
  return std::make_unique<EntryBlocks>(std::move(folder));
}

}  // namespace installer
