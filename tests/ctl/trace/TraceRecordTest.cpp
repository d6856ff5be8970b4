#include "ctl/trace/TraceRecord.h"

#include <gtest/gtest.h>

#include "base/TraceLine.h"

namespace installer::ctl {
namespace {

constexpr std::int64_t kDay = 86'400;

std::string written(const TraceLine& line) {
  LineText text;
  appendFormatted(line, text);
  return std::string(viewOf(text).substr(0, text.size() - 1));  // without the line feed
}

TraceLine at(int month, int day, int hour, int minute, int second) {
  TraceLine line;
  line.time.tm_mon = month - 1;
  line.time.tm_mday = day;
  line.time.tm_hour = hour;
  line.time.tm_min = minute;
  line.time.tm_sec = second;
  line.host = "mac";
  line.process = 42;
  line.message = "text";
  return line;
}

std::int64_t secondOf(const TraceLine& line, int year) {
  const std::string text = written(line);
  const auto record = readTraceRecord(text, year);
  return record ? record->second : -1;
}

TEST(TraceRecordTest, WhatTheInstallerWritesIsRead) {
  for (const LogLevel level :
       {LogLevel::error, LogLevel::warning, LogLevel::notice, LogLevel::info}) {
    TraceLine line = at(11, 2, 7, 8, 9);
    line.level = level;
    line.message = "[a] <Info>: b ";
    const std::string text = written(line);

    const auto record = readTraceRecord(text, 2026);

    ASSERT_TRUE(record) << text;
    EXPECT_EQ("Nov  2 07:08:09", record->time);
    EXPECT_EQ("mac", record->host);
    EXPECT_EQ(42, record->process);
    EXPECT_EQ(level, record->level);
    EXPECT_EQ("[a] <Info>: b ", record->text);
  }
}

TEST(TraceRecordTest, LevelsHaveTheNamesOfTheTrace) {
  EXPECT_EQ("Error", nameOf(LogLevel::error));
  EXPECT_EQ("Warning", nameOf(LogLevel::warning));
  EXPECT_EQ("Notice", nameOf(LogLevel::notice));
  EXPECT_EQ("Info", nameOf(LogLevel::info));
}

TEST(TraceRecordTest, SecondsAreThoseOfTheYear) {
  EXPECT_EQ(0, secondOf(at(1, 1, 0, 0, 0), 2026));
  EXPECT_EQ(30 * kDay + 3 * 3600 + 4 * 60 + 5, secondOf(at(1, 31, 3, 4, 5), 2026));
  EXPECT_EQ(58 * kDay, secondOf(at(2, 28, 0, 0, 0), 2026));
  EXPECT_EQ(59 * kDay, secondOf(at(3, 1, 0, 0, 0), 2026));
  EXPECT_EQ(60 * kDay, secondOf(at(3, 1, 0, 0, 0), 2024));
  EXPECT_EQ(60 * kDay, secondOf(at(3, 1, 0, 0, 0), 2000));
  EXPECT_EQ(59 * kDay, secondOf(at(3, 1, 0, 0, 0), 2100));
  EXPECT_EQ(59 * kDay, secondOf(at(2, 29, 0, 0, 0), 2024));
  EXPECT_EQ(364 * kDay + kDay - 1, secondOf(at(12, 31, 23, 59, 59), 2026));
}

TEST(TraceRecordTest, LinesOfAnotherFormAreNone) {
  const std::string good = "Nov 22 07:08:09 mac HotfixInstaller[42] <Info>: text";
  ASSERT_TRUE(readTraceRecord(good, 2026));
  for (const char* line : {"",
                           "text",
                           "Nov 22 07:08:09",
                           "Nov 22 07:08:09 mac",
                           "Nov 22 07:08:09 mac OtherProgram[42] <Info>: text",
                           "Nov 22 07:08:09 mac HotfixInstaller[4x] <Info>: text",
                           "Nov 22 07:08:09 mac HotfixInstaller[] <Info>: text",
                           "Nov 22 07:08:09 mac HotfixInstaller[42] <Debug>: text",
                           "Nov 22 07:08:09 mac HotfixInstaller[42] <Info> text",
                           "Nov 22 07:08:09 mac HotfixInstaller[42]: text",
                           "Nov 22 07:08:09-mac HotfixInstaller[42] <Info>: text",
                           "Non 22 07:08:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov 00 07:08:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov 32 07:08:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov -1 07:08:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov 22 24:08:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov 22 07:60:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov 22 07:08:61 mac HotfixInstaller[42] <Info>: text",
                           "Nov 22 07:08 09 mac HotfixInstaller[42] <Info>: text",
                           "Nov 22 07 08:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov-22 07:08:09 mac HotfixInstaller[42] <Info>: text",
                           "Nov 22-07:08:09 mac HotfixInstaller[42] <Info>: text"})
    EXPECT_FALSE(readTraceRecord(line, 2026)) << line;
}

TEST(TraceRecordTest, ANumberThatIsTooLargeIsNone) {
  EXPECT_FALSE(readTraceRecord(
      "Nov 22 07:08:09 mac HotfixInstaller[99999999999999999999999] <Info>: text", 2026));
}

TEST(TraceRecordTest, TimeGoesOn) {
  EXPECT_EQ(0, secondsBetween(10, 10, 2026));
  EXPECT_EQ(5, secondsBetween(10, 15, 2026));
}

TEST(TraceRecordTest, AYearThatEndsMeanwhileIsCounted) {
  EXPECT_EQ(15, secondsBetween(365 * kDay - 10, 5, 2026));
}

// The file's last change was in the new year, whose February counts for all lines.
TEST(TraceRecordTest, ALeapYearThatBeginsMeanwhileIsCounted) {
  const std::int64_t last = secondOf(at(12, 31, 23, 59, 50), 2028);
  EXPECT_EQ(20, secondsBetween(last, secondOf(at(1, 1, 0, 0, 10), 2028), 2028));
  EXPECT_EQ(0, secondsBetween(366 * kDay, 0, 2028));
  EXPECT_EQ(0, secondsBetween(366 * kDay + 1, 0, 2028));
}

TEST(TraceRecordTest, AClockThatWasTurnedBackTakesNoTime) {
  EXPECT_EQ(0, secondsBetween(10, 5, 2026));
  EXPECT_EQ(0, secondsBetween(183 * kDay, 0, 2026));
  EXPECT_EQ(182 * kDay - 1, secondsBetween(183 * kDay + 1, 0, 2026));
  EXPECT_EQ(0, secondsBetween(365 * kDay, 0, 2026));
  EXPECT_EQ(0, secondsBetween(365 * kDay + 10, 0, 2026));
}

}  // namespace
}  // namespace installer::ctl
