#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hotfix/base/PropertyList.h"
#include "platform/Platform.h"
#include "platform/posix/FilePasteboard.h"
#include "platform/posix/UserPreferences.h"
#include "support/CapturedLog.h"
#include "support/FailingFileManager.h"
#include "support/FakeClock.h"
#include "support/FakeProcessTable.h"
#include "support/FakeUserContext.h"
#include "support/RecordedChildren.h"
#include "support/TemporaryFolder.h"

namespace installer::test {

// A machine of the test's own, in force as Platform::current() for the sandbox's lifetime: every
// fixed path lies below a temporary root, where "tmp", "Library" and "Applications" exist; the file
// manager (which fails when told to), the pasteboard and the preferences are the real ones; clock,
// users, environment, process table, children and log are the test's.
//
// At first USER is "tester", a user with this process's ids and the home "Users/tester", to which
// HOME leads too; the group "admin" has this process's group id.
class Sandbox : public TemporaryFolder {
 public:
  Sandbox();

  Platform& platform() { return _platform; }
  const FixedPaths& paths() const { return _platform.paths; }
  FailingFileManager& files() { return _files; }
  Pasteboard& pasteboard() { return _pasteboard; }
  Preferences& preferences() { return _preferences; }
  FakeClock& clock() { return _clock; }
  FakeUserContext& users() { return _users; }
  FakeProcessTable& processes() { return _processes; }
  RecordedChildren& children() { return _children; }

  // The lines logged so far.
  const std::vector<LogLine>& log() const { return _log.lines(); }
  void clearLog() { _log.clear(); }

  // --- Files, named as this machine sees them ("tmp/x" or "/tmp/x") or by their whole path
  // --------

  const std::string& root() const { return TemporaryFolder::path(); }
  // The whole path; a trailing slash is kept.
  std::string path(std::string_view relative = "") const;

  // Each makes missing folders above and answers the whole path.
  std::string makeFolder(std::string_view relative, mode_t mode = 0755) const;
  std::string write(std::string_view relative, std::string_view text, mode_t mode = 0644) const;
  std::string writePlist(std::string_view relative,
                         const PropertyList::Dictionary& dictionary) const;
  std::string makeLink(std::string_view relative, std::string_view target) const;
  std::string makePipe(std::string_view relative) const;

  // The file's bytes; a missing file fails the test and is empty.
  std::string read(std::string_view relative) const;
  // The file, an XML property list, as a reader other than the program's understands it; an
  // unreadable one fails the test and is empty.
  PropertyList::Dictionary readPlist(std::string_view relative) const;
  // Whether the entry is there, be it a dangling link.
  bool exists(std::string_view relative) const;
  mode_t mode(std::string_view relative) const;  // permission bits, links not followed
  std::string linkTarget(std::string_view relative) const;
  void remove(std::string_view relative) const;  // whole trees too

 private:
  std::string relativePath(std::string_view name) const;
  Platform services();
  FixedPaths pathsBelowRoot() const;
  void addUser();

  FakeClock _clock;
  FakeUserContext _users;
  FailingFileManager _files{_users};
  RecordedChildren _children;
  FakeProcessTable _processes;
  CapturedLog _log{_clock};
  FilePasteboard _pasteboard{_files, root() + FixedPaths().pasteboard};
  UserPreferences _preferences{_files, _users};
  Platform _platform = services();
  ScopedPlatform _scope{_platform};
};

}  // namespace installer::test
