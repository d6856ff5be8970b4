#include <gmock/gmock.h>

#include <functional>
#include <memory>

#include "platform/posix/PosixChildProcesses.h"
#include "support/ChildFolder.h"
#include "support/Proves.h"
#include "support/RecordedChildren.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;

// One implementation with the means to play its children.
class Subject {
 public:
  virtual ~Subject() = default;
  virtual ChildProcesses& children() = 0;
  virtual std::string executable() = 0;
  virtual void letItPrint(const std::string& line) = 0;
  virtual std::vector<std::vector<std::string>> startedWith() = 0;
};

class RealSubject : public Subject {
 public:
  ChildProcesses& children() override { return _children; }
  std::string executable() override { return recordedChild(); }
  void letItPrint(const std::string& line) override {
    _played.script("RecordedChild", ChildScript().print(line + "\nsecond line\n").text());
  }
  std::vector<std::vector<std::string>> startedWith() override {
    std::vector<std::vector<std::string>> all;
    for (const ChildRecord& record : _played.records()) all.push_back(record.arguments);
    return all;
  }

 private:
  TemporaryFolder _folder;
  ChildFolder _played{_folder.path()};
  ScopedVariable _variable{ChildFolder::kVariable, _folder.path()};
  PosixChildProcesses _children;
};

class FakeSubject : public Subject {
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

struct Kind {
  std::string name;
  std::function<std::unique_ptr<Subject>()> make;
};

class ChildProcessesContractTest : public ::testing::TestWithParam<Kind> {
 protected:
  std::unique_ptr<Subject> _subject = GetParam().make();
};

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
  _subject->children().wait(*child);

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

INSTANTIATE_TEST_SUITE_P(
    Kinds, ChildProcessesContractTest,
    ::testing::Values(Kind{"Real", [] { return std::make_unique<RealSubject>(); }},
                      Kind{"Fake", [] { return std::make_unique<FakeSubject>(); }}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace installer::test
