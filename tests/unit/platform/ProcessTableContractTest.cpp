#include "unit/platform/ProcessTableContract.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "hotfix/platform/ProcessKeys.h"
#include "support/FakeProcessTable.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

namespace fs = std::filesystem;

using ::testing::Contains;
using ::testing::Each;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::string_view kExecutable = processKey::kExecutable;
constexpr std::string_view kName = processKey::kName;

TEST_P(ProcessTableContractTest, TellsThisProcessByItsPath) {
  EXPECT_THAT(_table->valuesForKey("CFBundleExecutable"), Contains(_self));
  EXPECT_THAT(_table->valuesForKey(kExecutable), Each(StartsWith("/")));
}

TEST_P(ProcessTableContractTest, TellsThisProcessByItsFileName) {
  EXPECT_THAT(_table->valuesForKey("CFBundleName"), Contains(fs::path(_self).filename().string()));
  EXPECT_THAT(_table->valuesForKey(kName), Each(Not(::testing::HasSubstr("/"))));
}

TEST_P(ProcessTableContractTest, KnowsNoOtherKey) {
  proves("PROCESS-1");
  EXPECT_THAT(_table->valuesForKey("CFBundleIdentifier"), IsEmpty());
  EXPECT_THAT(_table->valuesForKey(""), IsEmpty());
  EXPECT_THAT(_table->valuesForKey("cfbundleexecutable"), IsEmpty());
}

TEST_P(ProcessTableContractTest, TellsCommandLinesWithTheProgramFirst) {
  std::vector<std::string> programs;
  for (const std::vector<std::string>& line : _table->commandLines(geteuid())) {
    ASSERT_FALSE(line.empty());
    programs.push_back(line.front());
  }

  EXPECT_THAT(programs, Contains(EndsWith(fs::path(_self).filename().string())));
}

TEST_P(ProcessTableContractTest, ReportsAPathWhereNothingIsAsItIs) {
  proves("PROCESS-2");
  EXPECT_EQ(_table->asReported("/nowhere/at/../all"), "/nowhere/at/../all");
  EXPECT_EQ(_table->asReported(""), "");
}

std::unique_ptr<ProcessTable> makeFake() {
  auto table = std::make_unique<FakeProcessTable>();
  table->add("/sbin/init");
  table->add("/opt/a program");
  table->addCommandLine({"/opt/a program", "-x"});
  return table;
}

INSTANTIATE_TEST_SUITE_P(MadeUp, ProcessTableContractTest,
                         ::testing::Values(ProcessTableKind{
                             "Fake", [] { return std::string("/opt/a program"); }, makeFake}),
                         [](const auto& given) { return given.param.name; });

TEST(FakeProcessTableTest, ReportsPathsAsToldTo) {
  FakeProcessTable table;

  table.report("/link", "/target");

  EXPECT_EQ(table.asReported("/link"), "/target");
}

}  // namespace
}  // namespace installer::test
