#include "platform/WatchedChild.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "platform/Interruption.h"
#include "support/ChildFolder.h"
#include "support/ChildRun.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

const WatchedEnd kDone{0, std::nullopt};

class WatchedChildTest : public ::testing::Test {
 protected:
  static constexpr const char* kRole = "RecordedChild";

  std::unique_ptr<WatchedChild> start(const ChildScript& script) {
    _children.script(kRole, script.text());
    return startWatched({recordedChild(), {"one", "two"}}, _output, _lack);
  }
  static WatchedEnd endOf(WatchedChild& child) {
    for (;;)
      if (const auto end = child.end()) return *end;
  }
  std::string output() const { return _folder.content("output"); }
  void letGo() const { _folder.makeFile("go", ""); }
  std::string go() const { return _folder.path("go"); }

  const TemporaryFolder _folder;
  const std::string _output = _folder.path("output");
  const ChildFolder _children{_folder.path("children")};
  const ScopedVariable _variable{ChildFolder::kVariable, _folder.path("children")};
  StartLack _lack;
};

TEST_F(WatchedChildTest, StatusAndOutputsAreKept) {
  const auto child = start(ChildScript().print("out\n").printError("err\n").exit(7));

  ASSERT_NE(nullptr, child) << _lack.reason;
  EXPECT_EQ((WatchedEnd{7, std::nullopt}), endOf(*child));
  EXPECT_EQ((WatchedEnd{7, std::nullopt}), child->end()) << "it stays known";
  EXPECT_EQ("out\nerr\n", output());
  EXPECT_EQ((std::vector<std::string>{"one", "two"}), _children.records().at(0).arguments);
  struct stat status {};
  ASSERT_EQ(0, lstat(_output.c_str(), &status));
  EXPECT_EQ(0600u, status.st_mode & 07777u);
}

TEST_F(WatchedChildTest, OneThatRunsHasNoEndAndItsOutput) {
  const auto child = start(ChildScript().await(go()));
  ASSERT_NE(nullptr, child) << _lack.reason;

  EXPECT_EQ(std::nullopt, child->end());
  EXPECT_TRUE(isOutputHeld(_output));
  letGo();

  EXPECT_EQ(kDone, endOf(*child));
  EXPECT_FALSE(isOutputHeld(_output));
}

TEST_F(WatchedChildTest, ItCanBeAskedAndKilled) {
  const auto asked = start(ChildScript().await("/never"));
  ASSERT_NE(nullptr, asked);
  asked->ask();
  EXPECT_EQ((WatchedEnd{std::nullopt, "signal 15 (Terminated)"}), endOf(*asked));
  asked->ask();

  ASSERT_EQ(0, unlink(_output.c_str()));
  const auto killed = start(ChildScript().await("/never"));
  ASSERT_NE(nullptr, killed);
  killed->kill();
  EXPECT_EQ((WatchedEnd{std::nullopt, "signal 9 (Killed)"}), endOf(*killed));
}

TEST_F(WatchedChildTest, ItsEndIsWaitedForWhenNobodyLooks) {
  auto child = start(ChildScript().await(go()).write(_folder.path("done"), "x"));
  ASSERT_NE(nullptr, child);
  letGo();

  child.reset();

  EXPECT_EQ("x", _folder.content("done"));
  EXPECT_FALSE(isOutputHeld(_output));
}

TEST_F(WatchedChildTest, TheStatusOfAChildIsKnownThoughChildrenWereIgnored) {
  EXPECT_TRUE(inChild([&] {
    (void)std::signal(SIGCHLD, SIG_IGN);
    const auto child = start(ChildScript().exit(3));
    return child && endOf(*child) == WatchedEnd{3, std::nullopt};
  }));
}

TEST_F(WatchedChildTest, OneWhoseEndTheSystemDoesNotTellHasNeitherStatusNorSignal) {
  EXPECT_TRUE(inChild([&] {
    const auto child = start(ChildScript().await(go()));
    (void)std::signal(SIGCHLD, SIG_IGN);  // from now on children leave no status
    letGo();
    return child && endOf(*child) == WatchedEnd{std::nullopt, std::nullopt};
  }));
}

TEST_F(WatchedChildTest, OnlyWhatAsksToEndStaysIgnored) {
  EXPECT_TRUE(inChild([&] {
    for (const int ignored : {SIGHUP, SIGPIPE, SIGUSR1}) (void)std::signal(ignored, SIG_IGN);
    const auto child = start(ChildScript());
    return child && endOf(*child) == kDone;
  }));

  EXPECT_EQ(std::vector<int>{SIGHUP}, _children.records().at(0).ignoredSignals);
}

TEST_F(WatchedChildTest, SignalsArePassedOnToIt) {
  EXPECT_TRUE(inChild([&] {
    noteInterruptions();
    const auto child = start(ChildScript().await("/never"));
    raise(SIGINT);
    return child && endOf(*child) == WatchedEnd{std::nullopt, "signal 2 (Interrupt)"};
  }));
}

TEST_F(WatchedChildTest, AProgramThatIsMissingIsALack) {
  const auto child = startWatched({_folder.path("missing"), {}}, _output, _lack);

  EXPECT_EQ(nullptr, child);
  EXPECT_FALSE(_lack.isOutput);
  EXPECT_EQ("No such file or directory", _lack.reason);
  EXPECT_FALSE(isOutputHeld(_output));
}

TEST_F(WatchedChildTest, AnOutputThatIsThereOrLeadsElsewhereIsALack) {
  for (const char* name : {"there", "link"}) {
    const std::string there = _folder.makeFile("there", "mine");
    if (name == std::string("link")) (void)_folder.makeLink("link", "elsewhere");

    const auto child = startWatched({recordedChild(), {}}, _folder.path(name), _lack);

    EXPECT_EQ(nullptr, child);
    EXPECT_TRUE(_lack.isOutput);
    EXPECT_EQ("File exists", _lack.reason);
    EXPECT_EQ("mine", _folder.content("there"));
  }
  EXPECT_TRUE(_children.records().empty());
}

TEST_F(WatchedChildTest, WhatIsNoFileIsHeldByNobody) {
  EXPECT_FALSE(isOutputHeld(_folder.makePipe("pipe")));
  EXPECT_FALSE(isOutputHeld(_folder.path()));
  EXPECT_FALSE(isOutputHeld(_folder.path("missing")));
}

}  // namespace
}  // namespace installer::test
