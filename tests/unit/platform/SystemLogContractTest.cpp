#include "unit/platform/SystemLogContract.h"

#include <gmock/gmock.h>

#include "support/CapturedLog.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

TEST_P(SystemLogContractTest, MirrorsLinesIntoAnAddedFile) {
  proves("LOG-9");
  _log->write(LogLevel::info, "before");
  EXPECT_EQ(_log->addFile(_file), 0);

  _log->write(LogLevel::warning, "text");

  EXPECT_THAT(_folder.content("log"), StartsWith("Mar  9 14:05:07 "));
  EXPECT_THAT(_folder.content("log"), EndsWith("] <Warning>: text\n"));
}

TEST_P(SystemLogContractTest, MirrorsMessagesEscaped) {
  proves("LOG-9");
  ASSERT_EQ(_log->addFile(_file), 0);

  _log->write(LogLevel::info, "a\nb\x1b%s\xFF\n");

  EXPECT_THAT(_folder.content("log"), EndsWith("<Info>: a\\nb\\x1b%s\\xff\n"));
}

TEST_P(SystemLogContractTest, EndsTheMirroringWithoutClosing) {
  proves("LOG-9");
  ASSERT_EQ(_log->addFile(_file), 0);

  _log->removeFile(_file);
  _log->write(LogLevel::info, "text");

  EXPECT_EQ(_folder.content("log"), "");
  EXPECT_GE(fcntl(_file, F_GETFD), 0);
}

TEST_P(SystemLogContractTest, RefusesADescriptorThatIsNotOpen) {
  proves("LOG-9");
  EXPECT_NE(_log->addFile(12345), 0);
}

INSTANTIATE_TEST_SUITE_P(Captured, SystemLogContractTest,
                         ::testing::Values(SystemLogKind{
                             "Fake",
                             [](Clock& clock) { return std::make_unique<CapturedLog>(clock); }}),
                         [](const auto& given) { return given.param.name; });

TEST(CapturedLogTest, RemembersLevelsAndExactTexts) {
  FakeClock clock;
  CapturedLog log(clock);

  log.write(LogLevel::error, "first");
  log.write(LogLevel::notice, "a\n\x1b\n");

  EXPECT_THAT(log.lines(), ::testing::ElementsAre(Says(LogLevel::error, "first"),
                                                  Says(LogLevel::notice, "a\n\x1b\n")));
}

TEST(CapturedLogTest, ForgetsWhenCleared) {
  FakeClock clock;
  CapturedLog log(clock);
  log.write(LogLevel::error, "first");

  log.clear();

  EXPECT_TRUE(log.lines().empty());
}

TEST(CapturedLogTest, MatchersTellLinesApart) {
  const LogLine line{LogLevel::warning, "The rcp home is missing."};

  EXPECT_THAT(line, ::testing::AllOf(AtLevel(4), AtLevel(LogLevel::warning), Mentions("rcp home"),
                                     Says(LogLevel::warning, "The rcp home is missing.")));
  EXPECT_THAT(line, ::testing::Not(AtLevel(3)));
  EXPECT_THAT(line, ::testing::Not(Mentions("rcp  home")));
  EXPECT_THAT(line, ::testing::Not(Says(LogLevel::warning, "The rcp home is missing")));
  EXPECT_THAT(line, ::testing::Not(Says(LogLevel::error, "The rcp home is missing.")));
}

}  // namespace
}  // namespace installer::test
