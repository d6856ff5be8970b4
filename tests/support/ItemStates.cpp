#include "support/ItemStates.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>

#include "platform/files/FileSystemCalls.h"
#include "support/TreeSnapshot.h"

namespace installer::test {

namespace {

// The systems spell it differently.
template <class Status>
timespec changeTime(const Status& status) {
  if constexpr (requires { status.st_ctim; })
    return status.st_ctim;
  else
    return status.st_ctimespec;
}

std::ostream& operator<<(std::ostream& text, const timespec& time) {
  return text << time.tv_sec << "." << time.tv_nsec;
}

}  // namespace

std::map<std::string, std::string> statesBelow(const std::string& folder) {
  std::map<std::string, std::string> states;
  for (const auto& [name, item] : snapshotOf(folder)) {
    struct stat status {};
    EXPECT_EQ(::lstat((folder + "/" + name).c_str(), &status), 0) << name;
    std::ostringstream text;
    text << status.st_ino << " " << std::oct << status.st_mode << std::dec << " " << status.st_uid
         << ":" << status.st_gid << " " << status.st_nlink << " " << status.st_size << " "
         << syscalls::modificationTime(status) << " " << changeTime(status);
    states[name] = text.str();
  }
  return states;
}

}  // namespace installer::test
