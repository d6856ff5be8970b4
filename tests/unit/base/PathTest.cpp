#include "hotfix/base/Path.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/Proves.h"

namespace installer::test {
namespace {

struct Appending {
  std::string name, path, component, result;
};

class AppendingComponentTest : public ::testing::TestWithParam<Appending> {};

TEST_P(AppendingComponentTest, GivesTheJoinedPath) {
  proves("PATH-1");
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
  proves("PATH-1");
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
  proves("PATH-1");
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

TEST(PathTest, APathIsItsFolderAndItsName) {
  proves("PATH-1");
  std::mt19937 random(7);
  const std::string letters = "/a.~";
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (std::size_t length = random() % 9; length > 0; --length) text += letters[random() % 4];

    const std::string folder = path::deletingLastComponent(text);
    const std::string name = path::lastComponent(text);

    EXPECT_EQ(path::appendingComponent(folder, name), path::appendingComponent(text, "")) << text;
  }
}

}  // namespace
}  // namespace installer::test
