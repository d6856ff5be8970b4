#pragma once

#include <string>

#include "platform/Platform.h"
#include "platform/SystemLog.h"
#include "support/FakeClock.h"
#include "support/FakeUserContext.h"
#include "support/StubFileManager.h"

namespace installer::fuzz {

// Files in memory that can be written too. Reading one that was never written says that it is
// missing.
class MemoryFiles : public test::StubFileManager {
 public:
  bool exists(const std::string& path, FileError* error) override {
    if (contents.contains(path)) return true;
    if (error != nullptr) error->code = FileError::kMissing;
    return false;
  }
  std::optional<std::string> read(const std::string& path, FileError* error) override {
    if (!exists(path, error)) return std::nullopt;
    return contents[path];
  }
  bool write(const std::string& path, std::string_view bytes, ReplacedFile, std::optional<mode_t>,
             FileError*) override {
    contents[path] = bytes;
    return true;
  }
};

class QuietLog : public SystemLog {
 public:
  void write(LogLevel, std::string_view) override {}
  int addFile(int) override { return 0; }
  void removeFile(int) override {}
};

// A machine without a disk, in force as long as it lives: the user "tester", whose home is
// "/Users/tester", is at it.
class Machine {
 public:
  Machine() {
    _users.userList = {{.name = "tester", .uid = 0, .gid = 0, .home = "/Users/tester"}};
    _users.variables = {{"USER", "tester"}, {"HOME", "/Users/tester"}};
    _platform.files = &_files;
    _platform.log = &_log;
    _platform.users = &_users;
    _platform.clock = &_clock;
  }

  std::map<std::string, std::string>& files() { return _files.contents; }

 private:
  MemoryFiles _files;
  QuietLog _log;
  test::FakeUserContext _users;
  test::FakeClock _clock;
  Platform _platform;
  ScopedPlatform _scope{_platform};
};

}  // namespace installer::fuzz
