#include "platform/JavaRuntime.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

namespace fs = std::filesystem;

class JavaRuntimeTest : public ::testing::Test {
 protected:
  // What counts as an executable file of that name.
  void installJava(const std::string& relative) { _sandbox.write(relative, "java", 0755); }
  void searchIn(const std::string& path) { _sandbox.users().variables["PATH"] = path; }
  std::string folder(const std::string& relative) { return _root + "/" + relative; }

  Sandbox _sandbox;
  const std::string _root = fs::canonical(_sandbox.root()).string();  // homes are told so
};

TEST_F(JavaRuntimeTest, VariableComesBeforeTheSearchPathAndIsTakenAsItIs) {
  proves("JAVA-3");
  installJava("jdk/bin/java");
  searchIn(folder("jdk/bin"));
  _sandbox.users().variables["JAVA_HOME"] = "no such/home/";

  EXPECT_EQ(hostJavaHome(), "no such/home/");
}

TEST_F(JavaRuntimeTest, EmptyVariableIsNone) {
  proves("JAVA-3");
  installJava("jdk/bin/java");
  searchIn(folder("jdk/bin"));
  _sandbox.users().variables["JAVA_HOME"] = "";

  EXPECT_EQ(hostJavaHome(), folder("jdk"));
}

TEST_F(JavaRuntimeTest, NothingIsKnownWithoutVariables) {
  EXPECT_EQ(hostJavaHome(), std::nullopt);
}

TEST_F(JavaRuntimeTest, FirstJavaOfTheSearchPathCounts) {
  proves("JAVA-4");
  installJava("b/bin/java");
  installJava("c/bin/java");
  searchIn(folder("a/bin") + "::" + folder("b/bin") + ":" + folder("c/bin"));

  EXPECT_EQ(hostJavaHome(), folder("b"));
}

TEST_F(JavaRuntimeTest, LastEntryOfTheSearchPathCountsToo) {
  proves("JAVA-4");
  installJava("b/bin/java");
  searchIn(folder("a/bin") + ":" + folder("b/bin"));

  EXPECT_EQ(hostJavaHome(), folder("b"));
}

TEST_F(JavaRuntimeTest, RelativeEntriesArePassedOver) {
  proves("JAVA-4");
  installJava("jdk/bin/java");
  searchIn(fs::relative(folder("jdk/bin")).string());

  EXPECT_EQ(hostJavaHome(), std::nullopt);
}

TEST_F(JavaRuntimeTest, LinksAreResolved) {
  installJava("jdk/bin/java");
  _sandbox.makeLink("usr/bin/java", folder("alternatives/java"));
  _sandbox.makeLink("alternatives/java", folder("jdk/bin/java"));
  searchIn(folder("usr/bin"));

  EXPECT_EQ(hostJavaHome(), folder("jdk"));
}

TEST_F(JavaRuntimeTest, JavaOutsideOfABinFolderTellsNoHome) {
  proves("JAVA-4");
  installJava("tools/java");
  installJava("jdk/bin/java");
  searchIn(folder("tools") + ":" + folder("jdk/bin"));

  EXPECT_EQ(hostJavaHome(), std::nullopt);
}

TEST_F(JavaRuntimeTest, FoldersPlainFilesAndDanglingLinksArePassedOver) {
  proves("JAVA-4");
  _sandbox.makeFolder("a/bin/java");
  _sandbox.write("b/bin/java", "no program", 0644);
  _sandbox.makeLink("c/bin/java", "nowhere");
  installJava("d/bin/java");
  searchIn(folder("a/bin") + ":" + folder("b/bin") + ":" + folder("c/bin") + ":" + folder("d/bin"));

  EXPECT_EQ(hostJavaHome(), folder("d"));
}

}  // namespace
}  // namespace installer::test
