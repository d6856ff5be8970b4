#include "platform/JavaRuntime.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class JavaRuntimeTest : public ::testing::Test {
 protected:
  // What counts as an executable file of that name.
  void installJava(const std::string& relative) { _sandbox.write(relative, "java", 0755); }
  void searchIn(const std::string& path) { _sandbox.users().variables["PATH"] = path; }
  std::string folder(const std::string& relative) { return _root + "/" + relative; }
  // What was said of the Java that is passed over.
  static std::string refusal(const std::string& java, const std::string& reason) {
    return "The Java at " + java + " is passed over: " + reason + ".";
  }
  std::vector<std::string> warnings() const {
    std::vector<std::string> texts;
    for (const LogLine& line : _sandbox.log())
      if (line.level == LogLevel::warning) texts.push_back(line.text);
    return texts;
  }

  Sandbox _sandbox;
  const std::string _root = fs::canonical(_sandbox.root()).string();  // homes are told so
};

TEST_F(JavaRuntimeTest, VariableComesBeforeTheSearchPathAndIsTakenAsItIs) {
  proves("JAVA-3");
  installJava("jdk/bin/java");
  searchIn(folder("jdk/bin"));
  _sandbox.users().variables["JAVA_HOME"] = folder("no such//home/");

  EXPECT_EQ(hostJavaHome(), folder("no such//home/"));
  EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(JavaRuntimeTest, RelativeVariableIsPassedOverWithALine) {
  proves("JAVA-5");
  installJava("jdk/bin/java");
  installJava("other/bin/java");
  searchIn(folder("other/bin"));
  const std::string home = fs::relative(folder("jdk")).string();
  _sandbox.users().variables["JAVA_HOME"] = home;

  EXPECT_EQ(hostJavaHome(), folder("other"));
  EXPECT_THAT(warnings(), ElementsAre(refusal(home + "/bin/java", "the path is relative")));
}

TEST_F(JavaRuntimeTest, VariableThatOthersCanWriteIsPassedOverWithALine) {
  proves("JAVA-5");
  installJava("jdk/bin/java");
  installJava("other/bin/java");
  searchIn(folder("other/bin"));
  _sandbox.users().variables["JAVA_HOME"] = folder("jdk");
  _sandbox.makeFolder("jdk", 0775);

  EXPECT_EQ(hostJavaHome(), folder("other"));
  EXPECT_THAT(warnings(),
              ElementsAre(refusal(folder("jdk/bin/java"), "others can write " + folder("jdk"))));
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
  installJava("other/bin/java");
  const std::string entry = fs::relative(folder("jdk/bin")).string();
  searchIn("no such:" + entry + ":" + folder("other/bin"));

  EXPECT_EQ(hostJavaHome(), folder("other"));
  EXPECT_THAT(warnings(), ElementsAre(refusal(entry + "/java", "the path is relative")));
}

TEST_F(JavaRuntimeTest, EntryThatOthersCanWriteIsPassedOver) {
  proves("JAVA-5");
  installJava("a/bin/java");
  installJava("b/bin/java");
  installJava("c/bin/java");
  _sandbox.makeFolder("a/bin", 0757);
  _sandbox.write("b/bin/java", "java", 0775);
  searchIn(folder("a/bin") + ":" + folder("b/bin") + ":" + folder("c/bin"));

  EXPECT_EQ(hostJavaHome(), folder("c"));
  EXPECT_THAT(
      warnings(),
      ElementsAre(refusal(folder("a/bin/java"), "others can write " + folder("a/bin")),
                  refusal(folder("b/bin/java"), "others can write " + folder("b/bin/java"))));
}

TEST_F(JavaRuntimeTest, JavaOfAnotherUserIsPassedOver) {
  proves("JAVA-5");
  installJava("jdk/bin/java");
  searchIn(folder("jdk/bin"));
  const uid_t other = 4711;
  if (chown(folder("jdk/bin/java").c_str(), other, other) != 0)
    GTEST_SKIP() << "only root can give files away";

  EXPECT_EQ(hostJavaHome(), std::nullopt);
  EXPECT_THAT(warnings(),
              ElementsAre(refusal(folder("jdk/bin/java"),
                                  folder("jdk/bin/java") + " belongs to the user 4711")));
}

TEST_F(JavaRuntimeTest, JavaOfTheEffectiveUserIsTheirOwn) {
  installJava("jdk/bin/java");
  searchIn(folder("jdk/bin"));
  const uid_t other = 4711;
  if (chown(folder("jdk/bin/java").c_str(), other, other) != 0)
    GTEST_SKIP() << "only root can give files away";
  _sandbox.users().effectiveUser = other;

  EXPECT_EQ(hostJavaHome(), folder("jdk"));
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
