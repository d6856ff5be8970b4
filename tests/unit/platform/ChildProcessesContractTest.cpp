#include "unit/platform/ChildProcessesContract.h"

#include <gmock/gmock.h>

#include "support/Proves.h"
#include "support/RecordedChildren.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;

TEST_P(ChildProcessesContractTest, StartsEachCommandOnceWithItsArguments) {
  ChildProcesses& children = _subject->children();

  for (const char* argument : {"first", "second"}) {
    const auto child = children.start({_subject->executable(), {"-x", argument}}, nullptr);
    ASSERT_TRUE(child.has_value());
    EXPECT_EQ(children.wait(*child), std::nullopt);
  }

  EXPECT_THAT(_subject->startedWith(),
              ElementsAre(ElementsAre("-x", "first"), ElementsAre("-x", "second")));
}

TEST_P(ChildProcessesContractTest, SuccessLeavesTheReasonAlone) {
  std::string reason = "untouched";

  const auto child = _subject->children().start({_subject->executable(), {}}, &reason);
  ASSERT_TRUE(child.has_value());
  (void)_subject->children().wait(*child);  // only its start is asked about

  EXPECT_EQ(reason, "untouched");
}

TEST_P(ChildProcessesContractTest, AMissingExecutableIsNotStartedAndTheReasonIsTold) {
  proves("CHILD-6");
  std::string reason;

  EXPECT_EQ(_subject->children().start({"/nowhere/tool", {}}, &reason), std::nullopt);

  EXPECT_EQ(reason, "No such file or directory");
}

TEST_P(ChildProcessesContractTest, TheReasonNeedNotBeAskedFor) {
  EXPECT_EQ(_subject->children().start({"/nowhere/tool", {}}, nullptr), std::nullopt);
}

TEST_P(ChildProcessesContractTest, FirstLineIsWhatTheChildPrintsFirst) {
  _subject->letItPrint("/opt/java home");

  EXPECT_EQ(_subject->children().firstLine({_subject->executable(), {}}), "/opt/java home");
}

TEST_P(ChildProcessesContractTest, NoFirstLineComesFromAMissingExecutable) {
  EXPECT_EQ(_subject->children().firstLine({"/nowhere/tool", {}}), std::nullopt);
}

TEST_P(ChildProcessesContractTest, NoFirstLineComesFromASilentChild) {
  EXPECT_EQ(_subject->children().firstLine({_subject->executable(), {}}), std::nullopt);
}

TEST_P(ChildProcessesContractTest, AShellLineThatSucceedsHasStatusZero) {
  EXPECT_EQ(_subject->children().shell("true"), 0);
}

class FakeSubject : public ChildProcessesSubject {
 public:
  FakeSubject() { _children.failToStart("/nowhere/tool"); }
  ChildProcesses& children() override { return _children; }
  std::string executable() override { return "/some/tool"; }
  void letItPrint(const std::string& line) override { _children.print(executable(), line); }
  std::vector<std::vector<std::string>> startedWith() override {
    std::vector<std::vector<std::string>> all;
    for (const Command& command : _children.started()) all.push_back(command.arguments);
    return all;
  }

 private:
  RecordedChildren _children;
};

INSTANTIATE_TEST_SUITE_P(Recorded, ChildProcessesContractTest,
                         ::testing::Values(ChildProcessesKind{
                             "Fake", [] { return std::make_unique<FakeSubject>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
