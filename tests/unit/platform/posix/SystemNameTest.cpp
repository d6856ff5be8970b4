#include "platform/SystemName.h"

#include <gtest/gtest.h>

#include "support/Judge.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

TEST(SystemNameTest, TellsWhatTheSystemsOwnProgramTells) {
  const TemporaryFolder folder;
  const SystemName system = systemName();

  EXPECT_EQ(
      askJudge(folder.path(), "uname -s; uname -r; uname -v; uname -m").output,
      system.name + "\n" + system.release + "\n" + system.version + "\n" + system.machine + "\n");
}

}  // namespace
}  // namespace installer::test
