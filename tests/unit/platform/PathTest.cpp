#include "platform/Path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer::test {
namespace {

using ::testing::ElementsAreArray;

struct Appending {
  std::string name, path, component, result;
};

class AppendingComponentTest : public ::testing::TestWithParam<Appending> {};

TEST_P(AppendingComponentTest, GivesTheJoinedPath) {
  EXPECT_EQ(path::appendingComponent(GetParam().path, GetParam().component), GetParam().result);
}

template <class Case>
std::string nameOf(const ::testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Table, AppendingComponentTest,
    ::testing::Values(
        Appending{"TwoComponents", "/a", "b/c", "/a/b/c"},
        Appending{"SlashesAtTheSeam", "/a/", "/b/", "/a/b"},
        Appending{"AbsoluteComponent", "/a", "/b", "/a/b"}, Appending{"EmptyPath", "", "b", "b"},
        Appending{"EmptyPathAbsoluteComponent", "", "/b/", "/b"},
        Appending{"EmptyComponent", "/a/", "", "/a"}, Appending{"BothEmpty", "", "", ""},
        Appending{"RootAndComponent", "/", "a", "/a"}, Appending{"RootAndRoot", "/", "/", "/"},
        Appending{"RootAndEmpty", "/", "", "/"}, Appending{"RelativeAndRoot", "a", "/", "a"},
        Appending{"EmptyAndRoot", "", "/", "/"},
        Appending{"RunsOfSlashes", "//a///b//", "c//d//", "/a/b/c/d"},
        Appending{"DotsStay", "/a/..", "./b", "/a/.././b"},
        Appending{"TildeStays", "~", "a", "~/a"},
        Appending{"BytesStay", "/\xff", "\xc3\xa4 b", "/\xff/\xc3\xa4 b"}),
    nameOf<Appending>);

struct Cutting {
  std::string name, path, result;
};

class DeletingLastComponentTest : public ::testing::TestWithParam<Cutting> {};

TEST_P(DeletingLastComponentTest, GivesThePathAbove) {
  EXPECT_EQ(path::deletingLastComponent(GetParam().path), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Table, DeletingLastComponentTest,
    ::testing::Values(Cutting{"Two", "/a/b", "/a"}, Cutting{"TrailingSlash", "/a/b/", "/a"},
                      Cutting{"One", "/a", "/"}, Cutting{"Root", "/", "/"},
                      Cutting{"Slashes", "///", "/"}, Cutting{"Relative", "a", ""},
                      Cutting{"RelativeTrailingSlash", "a/", ""}, Cutting{"Empty", "", ""},
                      Cutting{"RelativeTwo", "a/b", "a"}, Cutting{"Runs", "//a//b//c//", "/a/b"},
                      Cutting{"DotsAreComponents", "/a/..", "/a"},
                      Cutting{"RelativeDots", "../a", ".."}),
    nameOf<Cutting>);

class LastComponentTest : public ::testing::TestWithParam<Cutting> {};

TEST_P(LastComponentTest, GivesTheName) {
  EXPECT_EQ(path::lastComponent(GetParam().path), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LastComponentTest,
    ::testing::Values(Cutting{"Two", "/a/b", "b"}, Cutting{"TrailingSlash", "/a/b/", "b"},
                      Cutting{"One", "/a", "a"}, Cutting{"Root", "/", "/"},
                      Cutting{"Slashes", "///", "/"}, Cutting{"Relative", "a", "a"},
                      Cutting{"RelativeTrailingSlash", "a/", "a"}, Cutting{"Empty", "", ""},
                      Cutting{"Dots", "/a/..", ".."}),
    nameOf<Cutting>);

struct Splitting {
  std::string name, path;
  std::vector<std::string> result;
};

class ComponentsTest : public ::testing::TestWithParam<Splitting> {};

TEST_P(ComponentsTest, GivesEveryComponent) {
  EXPECT_THAT(path::components(GetParam().path), ElementsAreArray(GetParam().result));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ComponentsTest,
    ::testing::Values(
        Splitting{"Absolute", "/a/b", {"/", "a", "b"}},
        Splitting{"TrailingSlash", "/a//b/", {"/", "a", "b", "/"}}, Splitting{"Root", "/", {"/"}},
        Splitting{"Slashes", "//", {"/"}}, Splitting{"Empty", "", {}},
        Splitting{"Relative", "a", {"a"}}, Splitting{"RelativeTrailingSlash", "a/", {"a", "/"}},
        Splitting{"RelativeTwo", "a/b", {"a", "b"}}, Splitting{"LeadingRun", "//a", {"/", "a"}},
        Splitting{"TrailingRun", "a//", {"a", "/"}}, Splitting{"Dots", "./..", {".", ".."}},
        Splitting{"LongNames", "/abc/def", {"/", "abc", "def"}}),
    nameOf<Splitting>);

TEST(PathTest, APathIsItsFolderAndItsName) {
  std::mt19937 random(7);
  const std::string letters = "/a.~";
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (std::size_t length = random() % 9; length > 0; --length) text += letters[random() % 4];

    const std::string folder = path::deletingLastComponent(text);
    const std::string name = path::lastComponent(text);

    EXPECT_EQ(path::appendingComponent(folder, name), path::appendingComponent(text, "")) << text;
    std::string joined;
    for (const std::string& part : path::components(text)) {
      joined = path::appendingComponent(joined, part);
    }
    EXPECT_EQ(joined, path::appendingComponent(text, "")) << text;
  }
}

class Homes : public UserContext {
 public:
  std::optional<std::string> environment(const std::string& variable) override {
    return variable == "HOME" ? home : std::nullopt;
  }
  std::optional<std::string> currentUserName() override { return name; }
  uid_t effectiveUserId() override { return 0; }
  std::optional<User> findUser(const std::string& wanted) override {
    if (!users.contains(wanted)) return std::nullopt;
    return User{wanted, 1, 1, users[wanted]};
  }
  std::optional<gid_t> findGroup(const std::string&) override { return std::nullopt; }
  bool setEffectiveUserId(uid_t) override { return false; }

  std::optional<std::string> home = "/Users/me";
  std::optional<std::string> name = "ada";
  std::map<std::string, std::string> users{{"ada", "/database/ada/"}, {"homeless", ""}};
};

class ExpandingTildeTest : public ::testing::Test {
 protected:
  ExpandingTildeTest() { _platform.users = &_homes; }

  Homes _homes;
  Platform _platform;
  ScopedPlatform _scope{_platform};
};

TEST_F(ExpandingTildeTest, ATildeIsHome) {
  EXPECT_EQ(path::expandingTilde("~"), "/Users/me");
  EXPECT_EQ(path::expandingTilde("~/"), "/Users/me");
  EXPECT_EQ(path::expandingTilde("~/a//b/"), "/Users/me/a/b");
}

TEST_F(ExpandingTildeTest, WithoutHomeTheDatabaseKnowsTheFolder) {
  _homes.home.reset();
  EXPECT_EQ(path::expandingTilde("~/a"), "/database/ada/a");

  _homes.home = "";
  EXPECT_EQ(path::expandingTilde("~"), "/database/ada");
}

TEST_F(ExpandingTildeTest, WithoutAnyHomeThePathStays) {
  _homes.home.reset();
  _homes.name = "stranger";
  EXPECT_EQ(path::expandingTilde("~/a/"), "~/a/");

  _homes.name = "homeless";
  EXPECT_EQ(path::expandingTilde("~/a"), "~/a");

  _homes.name.reset();
  EXPECT_EQ(path::expandingTilde("~"), "~");
}

TEST_F(ExpandingTildeTest, ANamedUsersHomeComesFromTheDatabase) {
  EXPECT_EQ(path::expandingTilde("~ada"), "/database/ada");
  EXPECT_EQ(path::expandingTilde("~ada/x"), "/database/ada/x");
}

TEST_F(ExpandingTildeTest, AnUnknownUserStays) {
  EXPECT_EQ(path::expandingTilde("~stranger/x"), "~stranger/x");
  EXPECT_EQ(path::expandingTilde("~homeless/x"), "~homeless/x");
}

TEST_F(ExpandingTildeTest, OnlyALeadingTildeCounts) {
  EXPECT_EQ(path::expandingTilde(""), "");
  EXPECT_EQ(path::expandingTilde("/a//~/b/"), "/a//~/b/");
  EXPECT_EQ(path::expandingTilde("a~"), "a~");
}

}  // namespace
}  // namespace installer::test
