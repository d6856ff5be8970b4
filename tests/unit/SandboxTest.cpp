#include "support/Sandbox.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "platform/ChildProcesses.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/ProcessTable.h"
#include "platform/UserContext.h"

namespace installer::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::StartsWith;

std::vector<std::string> allPaths(const FixedPaths& paths) {
  std::vector<std::string> all;
  FixedPaths::each(paths, [&](const char*, const std::string& path) { all.push_back(path); });
  return all;
}

TEST(SandboxTest, PutsEveryFixedPathBelowItsRoot) {
  const Sandbox sandbox;
  std::vector<std::string> expected = allPaths(FixedPaths());
  for (std::string& path : expected) path.insert(0, sandbox.root());

  EXPECT_EQ(allPaths(Platform::current().paths), expected);
  EXPECT_THAT(allPaths(sandbox.paths()), Each(StartsWith("/")));
}

TEST(SandboxTest, IsInForceForItsLifetimeAndGoneAfterwards) {
  Platform* const before = &Platform::current();
  std::string root;
  {
    Sandbox sandbox;
    root = sandbox.root();

    EXPECT_EQ(&Platform::current(), &sandbox.platform());
    EXPECT_TRUE(std::filesystem::is_directory(root + "/tmp"));
  }

  EXPECT_EQ(&Platform::current(), before);
  EXPECT_FALSE(std::filesystem::exists(root));
}

TEST(SandboxTest, TakesNamesAsTheMachineSeesThem) {
  const Sandbox sandbox;
  const std::string file = sandbox.write("tmp/file", "text");

  EXPECT_EQ(file, sandbox.root() + "/tmp/file");
  EXPECT_EQ(sandbox.path("/tmp/file"), file);
  EXPECT_EQ(sandbox.path(file), file);
  EXPECT_EQ(sandbox.path(), sandbox.root());
  EXPECT_EQ(sandbox.path(sandbox.root()), sandbox.root());
  EXPECT_EQ(sandbox.path("tmp/"), sandbox.root() + "/tmp/");
  EXPECT_EQ(sandbox.read("/tmp/file"), "text");
}

TEST(SandboxTest, ServicesActOnTheSameMachine) {
  Sandbox sandbox;
  Platform& platform = Platform::current();

  log(LogLevel::notice, "{} lines", 1);
  const auto child = platform.children->start({"/tool", {"x"}}, nullptr);
  EXPECT_EQ(platform.children->wait(*child), std::nullopt);
  platform.pasteboard->setRecord({{"a", "b"}});
  sandbox.processes().add("/tool");
  sandbox.clock().set(2025, 1, 2, 3, 4, 5);
  sandbox.writePlist("Users/tester/Library/Preferences/x.plist", {{"c", "d"}});

  EXPECT_THAT(sandbox.log(), ElementsAre(Says(LogLevel::notice, "1 lines")));
  EXPECT_THAT(sandbox.children().started(), ElementsAre(Command{"/tool", {"x"}}));
  EXPECT_EQ(sandbox.children().running(), 0U);
  EXPECT_EQ(sandbox.pasteboard().record(), (PropertyList::Dictionary{{"a", "b"}}));
  EXPECT_THAT(platform.processes->valuesForKey("CFBundleName"), ElementsAre("tool"));
  EXPECT_EQ(platform.clock->localTime().tm_year, 125);
  EXPECT_EQ(platform.preferences->domain("x"), (PropertyList::Dictionary{{"c", "d"}}));
  EXPECT_EQ(platform.users->consoleUserName(), "tester");
  EXPECT_EQ(platform.users->findUser("tester")->uid, geteuid());
  EXPECT_EQ(platform.users->findGroup("admin"), getegid());
}

TEST(SandboxTest, ChildrenDoWhatTheTestPlays) {
  Sandbox sandbox;
  sandbox.children().onStart(
      [&](const Command& command) { sandbox.write("tmp/result", command.executable); });

  const auto child = Platform::current().children->start({"/rcplauncher", {}}, nullptr);
  EXPECT_EQ(Platform::current().children->wait(*child), std::nullopt);

  EXPECT_EQ(sandbox.read("tmp/result"), "/rcplauncher");
}

}  // namespace
}  // namespace installer::test
