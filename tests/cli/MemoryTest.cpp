#include <gmock/gmock.h>

#include <cstdlib>
#include <regex>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Eq;
using ::testing::IsEmpty;

constexpr const char* kNoMemory =
    "There is not enough memory to go on. The installation ends here.";

// Runs in which memory that is asked for cannot be had.
class MemoryTest : public InstallerTest {
 protected:
  static constexpr const char* kCount = "/control/allocations";
  using Files = std::map<std::string, std::string>;

  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer replaces the allocation itself";
#endif
    InstallerTest::SetUp();
    _before = files();
  }

  // A run of which the allocation fails ("7": the seventh, "7+": it and all that follow, "0":
  // none).
  RunResult runWithout(const std::string& allocation) {
    RunOptions options;
    options.set("LD_PRELOAD", CliSandbox::kAllocationFault);
    options.set("HOTFIX_FAIL_ALLOCATION", allocation);
    options.set("HOTFIX_COUNT_ALLOCATIONS", kCount);
    return install(options);
  }

  // The instance as it was before any run.
  void renew() {
    _sandbox.remove(_instance.bundle);
    for (const std::string& name : _sandbox.list("/tmp")) _sandbox.remove("/tmp/" + name);
    buildInstance(_instance);
  }

  // The content of each file of the instance, with every stamp alike.
  Files files() const {
    static const std::regex stamp("\\b[0-9]{10}\\b");
    Files contents;
    for (const auto& [path, unused] : _sandbox.tree(_instance.bundle))
      if (const auto bytes = _sandbox.readFile(_instance.bundle + path))
        contents[path] = std::regex_replace(*bytes, stamp, "stamp");
    return contents;
  }

  // No file of the run is torn: each is the old one or the new one.
  void expectWholeFiles(const Files& after) const {
    for (const auto& [path, content] : files()) {
      if (path.ends_with("installInfo.plist")) {
        EXPECT_TRUE(readXmlList(content).has_value()) << content;  // it is written several times
        continue;
      }
      const auto old = _before.find(path);
      const auto fresh = after.find(path);
      const bool isOld = old != _before.end() && content == old->second;
      const bool isCopied = content == kSimpleManifest;  // before its places are put into it
      const bool isNew = fresh != after.end() && content == fresh->second;
      EXPECT_TRUE(isOld || isCopied || isNew) << path << ": " << content;
    }
  }

  // Whether the fault was told, or was none that changed anything.
  void expectTold(const RunResult& result, const Files& after) const {
    EXPECT_THAT(result.status, AnyOf(Eq(0), Eq(1)));
    if (result.status == 0) {
      EXPECT_EQ(files(), after);
      EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
    } else if (result.err.empty()) {
      EXPECT_THAT(_sandbox.texts("Error"), Contains(kNoMemory));
    } else {
      EXPECT_EQ("HotfixInstaller: There is not enough memory to begin.\n", result.err);
    }
  }

  // Lets every `stride`-th allocation fail, and each of the first, for they are few of a kind;
  // HOTFIX_STRIDE asks for another number.
  template <class Check>
  void sweep(unsigned long stride, const std::string& mark, Check check) {
    ASSERT_EQ(0, runWithout("0").status);
    const Files after = files();
    const unsigned long all = std::stoul(_sandbox.readFile(kCount).value());
    ASSERT_GT(all, 1000U);
    if (const char* const asked = std::getenv("HOTFIX_STRIDE")) stride = std::stoul(asked);
    for (unsigned long n = 1; n <= all && !HasFailure(); n += n < 40 ? 1 : stride) {
      const std::string allocation = std::to_string(n) + mark;
      SCOPED_TRACE("allocation " + allocation + " fails");
      renew();
      expectTold(runWithout(allocation), after);
      expectWholeFiles(after);
      check();
    }
  }

  Files _before;
};

TEST_F(MemoryTest, WhicheverAllocationFailsTheRunEndsInOrder) {
  proves("MEMORY-1", "MEMORY-2");
  sweep(13, "", [&] { EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty()); });
}

// Where not even the clearing up is given memory, a half-made folder stays, as after a kill.
TEST_F(MemoryTest, WhereverMemoryEndsForGoodTheEndIsToldAndNoFileIsTorn) {
  proves("MEMORY-1", "MEMORY-2");
  sweep(53, "+", [] {});
}

TEST_F(MemoryTest, EndIsTheLastLineOfTheTrace) {
  proves("MEMORY-2");

  EXPECT_EQ(1, runWithout("1000").status);

  EXPECT_EQ((TraceLine{"Error", kNoMemory}), _sandbox.trace().back());
}

}  // namespace
}  // namespace installer::cli
