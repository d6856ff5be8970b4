#include "ctl/report/Moment.h"

#include <gtest/gtest.h>

namespace installer::ctl::report {
namespace {

TEST(MomentTest, TimesOfAnyZoneBecomeSecondsSinceTheEpoch) {
  EXPECT_EQ(0, momentOf("1970-01-01T00:00:00+00:00"));
  EXPECT_EQ(1'795'347'302, momentOf("2026-11-22T11:35:02+00:00"));
  EXPECT_EQ(1'795'347'302, momentOf("2026-11-22T12:05:02+00:30"));
  EXPECT_EQ(1'795'347'302, momentOf("2026-11-22T03:35:02-08:00"));
  EXPECT_EQ(951'827'696, momentOf("2000-02-29T12:34:56+00:00"));
  EXPECT_EQ(253'402'300'799, momentOf("9999-12-31T23:59:59+00:00"));
}

TEST(MomentTest, NothingIsBeforeTheEpoch) {
  EXPECT_EQ(0, momentOf("1970-01-01T00:00:00+01:00"));
  EXPECT_EQ(std::nullopt, momentOf("1969-12-31T23:59:59+00:00"));
}

TEST(MomentTest, OtherTextsAreNone) {
  for (const char* text : {"",
                           "2026",
                           "2026-11-22",
                           "2026-11-22 11:35:02+00:00",
                           "2026-11-22T11:35:02",
                           "2026-11-22T11:35:02Z",
                           "2026-11-22T11:35:02+0000",
                           "2026-11-22T11:35:02+00:00 ",
                           "2026-13-22T11:35:02+00:00",
                           "2026-02-29T11:35:02+00:00",
                           "2026-11-00T11:35:02+00:00",
                           "2026-11-22T24:35:02+00:00",
                           "2026-11-22T11:60:02+00:00",
                           "2026-11-22T11:35:61+00:00",
                           "2026/11-22T11:35:02+00:00",
                           "2026-11/22T11:35:02+00:00",
                           "2026-11-22T11.35:02+00:00",
                           "2026-11-22T11:35.02+00:00",
                           "2026-11-22T11:35:02 00:00",
                           "2026-11-22T11:35:02+00.00",
                           "202a-11-22T11:35:02+00:00",
                           "-026-11-22T11:35:02+00:00",
                           "2026-11-22T11:35:02+0a:00"})
    EXPECT_EQ(std::nullopt, momentOf(text)) << text;
}

TEST(MomentTest, KeptRunsAreNamedByTheirBegin) {
  EXPECT_EQ(1'795'347'302, momentOfRun("20261122T113502.045Z-Quillmere"));
  EXPECT_EQ(std::nullopt, momentOfRun("20261322T113502.045Z-Quillmere"));
  EXPECT_EQ(std::nullopt, momentOfRun("20261122T113502"));
  EXPECT_EQ(std::nullopt, momentOfRun("lock"));
}

TEST(MomentTest, PeopleReadThemInUtc) {
  EXPECT_EQ("2026-11-22 11:35:02", utcText(1'795'347'302));
  EXPECT_EQ("1970-01-01 00:00:00", utcText(0));
  EXPECT_EQ("1969-12-31 23:59:59", utcText(-1));
}

}  // namespace
}  // namespace installer::ctl::report
