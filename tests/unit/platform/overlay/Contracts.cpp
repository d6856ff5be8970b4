// The file manager that changes nothing on the disk, in the contract suites of those that do.

#include "platform/overlay/OverlayFileManager.h"
#include "support/OverlayMaker.h"
#include "support/OverlaySnapshot.h"
#include "unit/platform/FileManagerContract.h"

namespace installer::test {
namespace {

class FilesInMemory : public ChangingFileManagerSubject {
 public:
  explicit FilesInMemory(UserContext& users) : _files(users, ownMaker()) {}

  FileManager& files() override { return _files; }
  const TemporaryFolder& disk() override { return _folder; }
  // The disk was looked at already.
  void put(const std::string& name, const std::string& bytes) override {
    (void)_files.write(_folder.path(name), bytes);  // the test looks
  }
  TreeSnapshot now() override { return snapshotOf(_files.tree(), _folder.path()); }

 private:
  TemporaryFolder _folder{memoryFolder()};
  overlay::OverlayFileManager _files;
};

INSTANTIATE_TEST_SUITE_P(Overlay, FileManagerContractTest,
                         ::testing::Values(FileManagerKind{"InMemory",
                                                           [] {
                                                             static FakeUserContext users;
                                                             return std::make_unique<FilesInMemory>(
                                                                 users);
                                                           }}),
                         [](const auto& given) { return given.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Overlay, ChangingFileManagerContractTest,
    ::testing::Values(ChangingFileManagerKind{
        "InMemory", [](UserContext& users) { return std::make_unique<FilesInMemory>(users); }}),
    [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
