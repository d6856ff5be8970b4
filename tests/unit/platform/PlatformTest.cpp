#include "platform/Platform.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

namespace installer::test {
namespace {

TEST(PlatformTest, IsMadeOnce) {
  EXPECT_EQ(&Platform::current(), &Platform::current());
}

TEST(PlatformTest, IsReplacedForAScope) {
  Platform* const real = &Platform::current();
  Platform other;
  {
    const ScopedPlatform scope(other);

    EXPECT_EQ(&Platform::current(), &other);
  }

  EXPECT_EQ(&Platform::current(), real);
}

TEST(PlatformTest, ScopesNest) {
  Platform outer;
  Platform inner;
  const ScopedPlatform outerScope(outer);
  {
    const ScopedPlatform innerScope(inner);

    EXPECT_EQ(&Platform::current(), &inner);
  }

  EXPECT_EQ(&Platform::current(), &outer);
}

TEST(FixedPathsTest, AreWhatOtherProgramsExpect) {
  const FixedPaths paths;

  EXPECT_EQ(paths.traceFile, "/tmp/install_trace.log");
  EXPECT_EQ(paths.errorMarker, "/tmp/quillmere.hotfix.error");
  EXPECT_EQ(paths.pasteboard, "/tmp/INSTALLATION_INTERNAL_PASTEBOARD");
  EXPECT_EQ(paths.internalConfiguration, "/tmp/com.kiv.rcp.platform.internal.configuration");
  EXPECT_EQ(paths.staleResultPanel, "/tmp/qlm.config");
  EXPECT_EQ(paths.stagingFolder, "/tmp/qlmcore2/");
  EXPECT_EQ(paths.addonLogFolder, "/tmp");
  EXPECT_EQ(paths.registrations, "/Library/Application Support/Velna");
  EXPECT_EQ(paths.fallbackRcpHome, "/Applications/Quillmere.app/Contents/MacOS/rcp");
  EXPECT_EQ(paths.javaAppletPlugin, "/Library/Internet Plug-Ins/JavaAppletPlugin.plugin/");
  EXPECT_EQ(paths.javaHomeTool, "/usr/libexec/java_home");
  EXPECT_EQ(paths.receiptTool, "/usr/sbin/pkgutil");
  EXPECT_EQ(paths.volumes, "/Volumes");
}

TEST(FixedPathsTest, EachOneIsVisitedOnceUnderItsName) {
  FixedPaths paths;
  std::map<std::string, const std::string*> visited;

  FixedPaths::each(paths, [&](const std::string& name, std::string& path) {
    EXPECT_TRUE(visited.emplace(name, &path).second) << name;
  });

  const std::map<std::string, const std::string*> expected = {
      {"traceFile", &paths.traceFile},
      {"errorMarker", &paths.errorMarker},
      {"pasteboard", &paths.pasteboard},
      {"internalConfiguration", &paths.internalConfiguration},
      {"staleResultPanel", &paths.staleResultPanel},
      {"stagingFolder", &paths.stagingFolder},
      {"addonLogFolder", &paths.addonLogFolder},
      {"registrations", &paths.registrations},
      {"fallbackRcpHome", &paths.fallbackRcpHome},
      {"javaAppletPlugin", &paths.javaAppletPlugin},
      {"javaHomeTool", &paths.javaHomeTool},
      {"receiptTool", &paths.receiptTool},
      {"volumes", &paths.volumes}};
  EXPECT_EQ(visited, expected);
}

}  // namespace
}  // namespace installer::test
