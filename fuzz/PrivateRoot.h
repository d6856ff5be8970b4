#pragma once

#include <string>
#include <string_view>

namespace installer::fuzz {

// A folder in memory that is this process's root, and its working folder, as long as it is inside:
// whatever a run does to whatever paths, it does in there. The fuzzer's own files are outside, so
// it is inside only while an input is tried; every way in which a fuzzer learns of a failure leads
// out first, save for its limit of memory, whose input is found in the folder.
//
// Needs root, or a kernel that lets users have namespaces: the process ends with status 77 else.
class PrivateRoot {
 public:
  PrivateRoot();
  PrivateRoot(const PrivateRoot&) = delete;
  PrivateRoot& operator=(const PrivateRoot&) = delete;
  ~PrivateRoot();

  void enter();
  // Leaves nothing behind. Whether the name of anything that was there begins with the prefix.
  bool leave(std::string_view prefix);

 private:
  std::string _path;
};

}  // namespace installer::fuzz
