#pragma once

#include <string>

namespace installer::test {

// Stands for another process that holds a folder's lock: to the system, whoever opened the folder
// once more is another holder.
class FolderHolder {
 public:
  explicit FolderHolder(const std::string& folder);
  FolderHolder(const FolderHolder&) = delete;
  FolderHolder& operator=(const FolderHolder&) = delete;
  ~FolderHolder() { letGo(); }

  // Whether it got the lock and has it still.
  bool holds() const { return _descriptor >= 0; }
  void letGo();

 private:
  int _descriptor = -1;
};

// Whether anybody, this process included, has the folder's lock.
bool isLocked(const std::string& folder);

}  // namespace installer::test
