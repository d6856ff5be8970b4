#include "unit/platform/FileManagerContract.h"

#include <gmock/gmock.h>

#include "support/StubFileManager.h"

namespace installer::test {
namespace {

using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::UnorderedElementsAre;

const FileAttributes kOpen{.owner = "", .group = "", .mode = 0777};

TEST_P(FileManagerContractTest, ReadsTheBytesOfAFile) {
  const std::string bytes("a\0b\r\n\xFF", 6);
  _subject->put("file", bytes);

  EXPECT_EQ(_files.read(path("file")), bytes);
  EXPECT_TRUE(_files.exists(path("file")));
}

TEST_P(FileManagerContractTest, AFileThatIsNotThereReadsAsAbsent) {
  EXPECT_EQ(_files.read(path("none")), std::nullopt);
  EXPECT_EQ(_files.readUnlinked(path("none"), nullptr), std::nullopt);
  EXPECT_EQ(_files.owner(path("none")), std::nullopt);
}

TEST_P(FileManagerContractTest, ListsTheNamesInAFolder) {
  EXPECT_THAT(_files.list(_subject->folder()), Optional(IsEmpty()));

  _subject->put("b", "");
  _subject->put("a", "");

  EXPECT_THAT(_files.list(_subject->folder()), Optional(UnorderedElementsAre("a", "b")));
}

TEST_P(FileManagerContractTest, AChangeThatCannotBeMadeIsFalse) {
  EXPECT_FALSE(_files.write(path("none/file"), "x"));
  EXPECT_FALSE(_files.copy(path("none"), path("to"), ExistingItem::keep));
  EXPECT_FALSE(_files.remove(path("none")));
  EXPECT_FALSE(_files.createDirectory(path("none/folder"), Intermediates::refuse));
  EXPECT_FALSE(_files.createFile(path("none/file"), "", kOpen));
  EXPECT_FALSE(_files.changeAttributesBelow(path("none"), kOpen));
  EXPECT_EQ(_files.openLog(path("none/log")), -1);
}

class StubSubject : public FileManagerSubject {
 public:
  FileManager& files() override { return _files; }
  std::string folder() override { return "/stub"; }
  void put(const std::string& name, const std::string& bytes) override {
    _files.names.push_back(name);
    _files.contents[folder() + "/" + name] = bytes;
  }

 private:
  StubFileManager _files;
};

INSTANTIATE_TEST_SUITE_P(Stub, FileManagerContractTest,
                         ::testing::Values(FileManagerKind{
                             "Fake", [] { return std::make_unique<StubSubject>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
