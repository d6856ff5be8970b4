#include <sys/xattr.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::IsEmpty;

// As the kernel takes an ACL.
struct AclEntry {
  std::uint16_t tag;
  std::uint16_t permissions;
  std::uint32_t id = 0xFFFFFFFF;
};

struct Acl {
  std::uint32_t version = 2;
  std::array<AclEntry, 3> entries;
};

class FileManagerDefaultAclTest : public FileManagerFixture {
 protected:
  // New entries of the folder are closed to everybody but their owner and group, whatever they ask
  // for. False when the file system knows no ACLs.
  bool close(const std::string& folder) const {
    const Acl acl{.entries = {{{0x01, 07}, {0x04, 05}, {0x20, 00}}}};
    return ::setxattr(path(folder).c_str(), "system.posix_acl_default", &acl, sizeof acl, 0) == 0;
  }
};

TEST_F(FileManagerDefaultAclTest, CopiesKeepTheirModes) {
  proves("FILES-6");
  const CreationMask mask(022);
  for (const char* name : {"from/a", "from/b", "from/below/a", "from/below/b"})
    _folder.makeFile(name, "x", 0644);
  _folder.makeFolder("to/below");
  _folder.makeFolder("copies");
  if (!close("to") || !close("to/below") || !close("copies"))
    GTEST_SKIP() << "no ACLs here: " << std::strerror(errno);

  _files.merge(path("from"), path("to"), path(""));
  EXPECT_TRUE(_files.copy(path("from"), path("copies/tree"), ExistingItem::fail));
  EXPECT_TRUE(_files.copy(path("from/a"), path("copies/file"), ExistingItem::fail));

  EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("to")).lines(), IsEmpty());
  EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("copies/tree")).lines(), IsEmpty());
  EXPECT_EQ(modeOf("copies/file"), 0644u);
}

}  // namespace
}  // namespace installer::test
