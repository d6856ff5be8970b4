#pragma once

#include <set>
#include <string>

#include "platform/FixedPaths.h"

namespace installer {

class ChildProcesses;
class Clock;
class FileManager;
class Pasteboard;
class Preferences;
class ProcessTable;
class SystemLog;
class UserContext;

// The one door to the operating system: every service that the program uses, none of them owned
// here. The shipped program has exactly one, made by the first use of current().
struct Platform {
  FileManager* files = nullptr;
  ChildProcesses* children = nullptr;
  ProcessTable* processes = nullptr;
  Pasteboard* pasteboard = nullptr;
  SystemLog* log = nullptr;
  Preferences* preferences = nullptr;
  UserContext* users = nullptr;
  Clock* clock = nullptr;
  FixedPaths paths;

  // How many ToldOnce live, and which lines they have seen.
  int toldOnce = 0;
  std::set<std::string> saidOnce;

  // The platform in force: the real one unless a ScopedPlatform is alive.
  static Platform& current();
};

// Puts another platform in force for its own lifetime; scopes nest.
class [[nodiscard]] ScopedPlatform {
 public:
  explicit ScopedPlatform(Platform& platform);
  ScopedPlatform(const ScopedPlatform&) = delete;
  ScopedPlatform& operator=(const ScopedPlatform&) = delete;
  ~ScopedPlatform();

 private:
  Platform* _previous;
};

}  // namespace installer
