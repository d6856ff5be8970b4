#include "platform/files/FolderStream.h"

#include <dirent.h>

#include <cerrno>

namespace installer {

namespace {

class LibraryStream : public FolderStream {
 public:
  explicit LibraryStream(DIR* stream) : _stream(stream) {}
  LibraryStream(const LibraryStream&) = delete;
  LibraryStream& operator=(const LibraryStream&) = delete;
  ~LibraryStream() override { (void)::closedir(_stream); }  // nothing was written

  ListedEntry next() override {
    errno = 0;
    const dirent* const entry = ::readdir(_stream);
    if (entry == nullptr) return {};
    return {entry->d_name, kindOfListed(entry->d_type)};
  }

  void rewind() override { ::rewinddir(_stream); }
  int descriptor() const override { return ::dirfd(_stream); }

 private:
  DIR* _stream;
};

}  // namespace

std::unique_ptr<FolderStream> openFolderStream(Descriptor folder) {
  DIR* const stream = ::fdopendir(folder.get());
  if (stream == nullptr) return nullptr;
  (void)folder.release();  // the stream owns it now
  return std::make_unique<LibraryStream>(stream);
}

}  // namespace installer
