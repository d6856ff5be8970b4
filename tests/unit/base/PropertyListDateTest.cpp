#include "base/PropertyListDate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/Proves.h"

namespace installer::PropertyList {
namespace {

struct Pair {
  double seconds;
  const char* text;
};

constexpr Pair kPairs[] = {
    {0, "2001-01-01T00:00:00Z"},
    {1, "2001-01-01T00:00:01Z"},
    {60, "2001-01-01T00:01:00Z"},
    {3600, "2001-01-01T01:00:00Z"},
    {86399, "2001-01-01T23:59:59Z"},
    {86400, "2001-01-02T00:00:00Z"},
    {-1, "2000-12-31T23:59:59Z"},
    {-86400, "2000-12-31T00:00:00Z"},
    {-86401, "2000-12-30T23:59:59Z"},
    {-978307200, "1970-01-01T00:00:00Z"},
    {384169920, "2013-03-05T09:52:00Z"},
    {99705599, "2004-02-28T23:59:59Z"},
    {99705600, "2004-02-29T00:00:00Z"},
    {252423907200, "9999-12-31T00:00:00Z"},
    {252423993599, "9999-12-31T23:59:59Z"},
    {-63113904000, "0001-01-01T00:00:00Z"},
};

TEST(PropertyListDateTest, SecondsAreToldAsDayAndTime) {
  proves("LIST-9");
  for (const Pair& pair : kPairs) EXPECT_EQ(textFromDate(Date{pair.seconds}), pair.text);
}

TEST(PropertyListDateTest, DayAndTimeAreReadAsSeconds) {
  proves("LIST-9");
  for (const Pair& pair : kPairs) EXPECT_EQ(dateFromText(pair.text), Date{pair.seconds});
}

TEST(PropertyListDateTest, PartsOfASecondBelongToTheSecondInWhichTheyLie) {
  proves("LIST-9");
  EXPECT_EQ(textFromDate(Date{0.999}), "2001-01-01T00:00:00Z");
  EXPECT_EQ(textFromDate(Date{-0.001}), "2000-12-31T23:59:59Z");
  EXPECT_EQ(textFromDate(Date{252423993599.9}), "9999-12-31T23:59:59Z");
}

TEST(PropertyListDateTest, DatesWithoutAFourDigitYearHaveNoText) {
  proves("LIST-9");
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double seconds : {252423993600.0, -63113904001.0, -63113904000.5, 1e300, -1e300,
                               infinity, -infinity, std::nan("")})
    EXPECT_EQ(textFromDate(Date{seconds}), std::nullopt) << seconds;
}

TEST(PropertyListDateTest, OtherFormsAndDatesThatDoNotExistAreRefused) {
  proves("LIST-9");
  for (const char* text : {"",
                           "2001",
                           "2001-01-01",
                           "2001-01-01T00:00:00",
                           "2001-01-01T00:00:00Zx",
                           "2001-01-01T00:00:00z",
                           "2001-01-01 00:00:00Z",
                           "2001/01/01T00:00:00Z",
                           "2001-01-01T00-00-00Z",
                           "x001-01-01T00:00:00Z",
                           "200:-01-01T00:00:00Z",
                           "2001-01-0/T00:00:00Z",
                           "2001-01-01T00:00:0 Z",
                           "-001-01-01T00:00:00Z",
                           "0000-01-01T00:00:00Z",
                           "2001-00-01T00:00:00Z",
                           "2001-13-01T00:00:00Z",
                           "2001-01-00T00:00:00Z",
                           "2001-01-32T00:00:00Z",
                           "2001-02-29T00:00:00Z",
                           "1900-02-29T00:00:00Z",
                           "2001-04-31T00:00:00Z",
                           "2001-01-01T24:00:00Z",
                           "2001-01-01T00:60:00Z",
                           "2001-01-01T00:00:60Z"})
    EXPECT_EQ(dateFromText(text), std::nullopt) << text;
}

TEST(PropertyListDateTest, LeapDaysOfFullCenturiesExist) {
  EXPECT_EQ(textFromDate(*dateFromText("2000-02-29T12:34:56Z")), "2000-02-29T12:34:56Z");
}

TEST(PropertyListDateTest, DatesThatCannotBeToldAreNearestToOneThatCan) {
  proves("LIST-21");
  const Date first = *dateFromText("0001-01-01T00:00:00Z");
  const Date last = *dateFromText("9999-12-31T23:59:59Z");

  for (const double seconds : {first.seconds - 0.25, first.seconds - 1, -1e300, -HUGE_VAL})
    EXPECT_EQ(tellableDate({seconds}), first) << seconds;
  EXPECT_EQ(tellableDate({std::nan("")}), first);
  for (const double seconds : {last.seconds + 1, 1e300, HUGE_VAL})
    EXPECT_EQ(tellableDate({seconds}), last) << seconds;
  for (const double seconds : {first.seconds, -0.25, 0.0, 10.75, last.seconds, last.seconds + 0.5})
    EXPECT_EQ(tellableDate({seconds}), Date{seconds}) << seconds;
}

}  // namespace
}  // namespace installer::PropertyList
