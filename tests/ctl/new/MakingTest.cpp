#include "ctl/new/Making.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "platform/Interruption.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace installer::ctl::package {
namespace {

// A signal that has been noted stays so: a process of its own is asked to end.
TEST(MakingTest, ASignalEndsItAndLeavesNothing) {
  proves("NEW-8");
  const test::TemporaryFolder folder;
  Wanted wanted;
  wanted.folder = folder.path("new");
  wanted.packageName = "Hotfix.pkg";
  wanted.version = "1.5";
  wanted.bundleName = "Quillmere";
  wanted.frameworkPath = "Contents/MacOS";
  wanted.identifier = "com.quillmere.fix";
  wanted.withdraws = true;

  EXPECT_TRUE(test::inChild([&] {
    noteInterruptions();
    raise(SIGTERM);
    const auto answer = make(wanted, Despite::findings);
    const auto* const lack = std::get_if<CannotMake>(&answer);
    return lack != nullptr && lack->reason == "ended by signal 15 (Terminated)";
  }));

  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
}  // namespace installer::ctl::package
