// The services that every POSIX system has, and the files that keep record and preferences where no
// service does, in the contract suites.

#include <grp.h>
#include <pwd.h>

#include "platform/posix/FilePasteboard.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixUserContext.h"
#include "platform/posix/UserPreferences.h"
#include "support/ChildFolder.h"
#include "support/FailingFileManager.h"
#include "support/FakeUserContext.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/ChildProcessesContract.h"
#include "unit/platform/ClockContract.h"
#include "unit/platform/FileManagerContract.h"
#include "unit/platform/PasteboardContract.h"
#include "unit/platform/PreferencesContract.h"
#include "unit/platform/UserContextContract.h"

namespace installer::test {
namespace {

class PlayedChildren : public ChildProcessesSubject {
 public:
  ChildProcesses& children() override { return _children; }
  std::string executable() override { return recordedChild(); }
  void letItPrint(const std::string& line) override {
    _played.script("RecordedChild", ChildScript().print(line + "\nsecond line\n").text());
  }
  std::vector<std::vector<std::string>> startedWith() override {
    std::vector<std::vector<std::string>> all;
    for (const ChildRecord& record : _played.records()) all.push_back(record.arguments);
    return all;
  }

 private:
  TemporaryFolder _folder;
  ChildFolder _played{_folder.path()};
  ScopedVariable _variable{ChildFolder::kVariable, _folder.path()};
  PosixChildProcesses _children;
};

INSTANTIATE_TEST_SUITE_P(Posix, ChildProcessesContractTest,
                         ::testing::Values(ChildProcessesKind{
                             "Real", [] { return std::make_unique<PlayedChildren>(); }}),
                         [](const auto& given) { return given.param.name; });

class SystemUsers : public UserContextSubject {
 public:
  UserContext& users() override { return _users; }
  std::string homeOfRoot() override { return ::getpwuid(0)->pw_dir; }
  std::string groupOfRoot() override { return ::getgrgid(0)->gr_name; }
  void setVariable(const std::optional<std::string>& value) override {
    _variable.emplace(kContractVariable, value);
  }

 private:
  std::optional<ScopedVariable> _variable;
  PosixUserContext _users;
};

INSTANTIATE_TEST_SUITE_P(Posix, UserContextContractTest,
                         ::testing::Values(UserContextKind{
                             "Real", [] { return std::make_unique<SystemUsers>(); }}),
                         [](const auto& given) { return given.param.name; });

INSTANTIATE_TEST_SUITE_P(Posix, ClockContractTest,
                         ::testing::Values(ClockKind{
                             "Real", [] { return std::make_unique<PosixClock>(); }}),
                         [](const auto& given) { return given.param.name; });

template <class Manager>
class FilesOnDisk : public ChangingFileManagerSubject {
 public:
  explicit FilesOnDisk(UserContext& users) : _files(users) {}

  FileManager& files() override { return _files; }
  const TemporaryFolder& disk() override { return _folder; }
  TreeSnapshot now() override { return snapshotOf(_folder.path()); }

 private:
  TemporaryFolder _folder{memoryFolder()};
  Manager _files;
};

// The process's own user is nobody in particular.
template <class Manager>
std::unique_ptr<FileManagerSubject> onDisk() {
  static FakeUserContext users;
  return std::make_unique<FilesOnDisk<Manager>>(users);
}

INSTANTIATE_TEST_SUITE_P(Posix, FileManagerContractTest,
                         ::testing::Values(FileManagerKind{"Real", onDisk<PosixFileManager>},
                                           FileManagerKind{"Failing", onDisk<FailingFileManager>}),
                         [](const auto& given) { return given.param.name; });

template <class Manager>
std::unique_ptr<ChangingFileManagerSubject> changingOnDisk(UserContext& users) {
  return std::make_unique<FilesOnDisk<Manager>>(users);
}

INSTANTIATE_TEST_SUITE_P(
    Posix, ChangingFileManagerContractTest,
    ::testing::Values(ChangingFileManagerKind{"Real", changingOnDisk<PosixFileManager>},
                      ChangingFileManagerKind{"Failing", changingOnDisk<FailingFileManager>}),
    [](const auto& given) { return given.param.name; });

INSTANTIATE_TEST_SUITE_P(Posix, PasteboardContractTest,
                         ::testing::Values(PasteboardKind{"Files",
                                                          [](Sandbox& machine) {
                                                            return std::make_unique<FilePasteboard>(
                                                                machine.files(),
                                                                machine.paths().pasteboard);
                                                          }}),
                         [](const auto& given) { return given.param.name; });

class PreferenceFiles : public PreferencesSubject {
 public:
  Preferences& preferences() override { return _preferences; }
  void store(const std::string& domain, const PropertyList::Dictionary& values) override {
    _machine.writePlist("Users/tester/Library/Preferences/" + domain + ".plist", values);
  }

 private:
  Sandbox _machine;
  UserPreferences _preferences{_machine.files(), _machine.users()};
};

INSTANTIATE_TEST_SUITE_P(Posix, PreferencesContractTest,
                         ::testing::Values(PreferencesKind{
                             "Files", [] { return std::make_unique<PreferenceFiles>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
