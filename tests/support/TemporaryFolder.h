#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace installer::test {

// A private folder of one test, removed with everything below it at the end. The helpers below it
// use the system's own calls, never the code under test, and end the test program when the disk
// refuses them.
class TemporaryFolder {
 public:
  // Below TMPDIR, else below "/tmp".
  TemporaryFolder();
  // Below the folder `parent`.
  explicit TemporaryFolder(const std::string& parent);
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  // The folder itself, absolute, without a slash at the end.
  const std::string& path() const { return _path; }

  // The path of an entry below it; "" gives the folder itself.
  std::string path(std::string_view relative) const;

  // Each makes missing folders above, and answers the whole path.
  std::string makeFolder(std::string_view relative, mode_t mode = 0755) const;
  std::string makeFile(std::string_view relative, std::string_view bytes = {},
                       mode_t mode = 0644) const;
  std::string makeLink(std::string_view relative, std::string_view target) const;
  std::string makePipe(std::string_view relative) const;
  std::string makeSocket(std::string_view relative) const;
  std::string makeHardLink(std::string_view relative, std::string_view existing) const;

  // The bytes of the file; ends the test program when it cannot be read.
  std::string content(std::string_view relative) const;

 private:
  std::string _path;
};

// A folder for files that live in memory, where a flush costs nothing; the usual one where the
// system has none.
std::string memoryFolder();

// Removes a tree of any depth, whatever its modes. A missing one is fine.
void removeTree(const std::string& path);

}  // namespace installer::test
