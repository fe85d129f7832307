#include <gtest/gtest.h>

#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

struct Date {
  int y, m, d;
  bool operator==(const Date&) const = default;
};

// An independent calendar: month lengths, the Julian leap rule before the switch and the
// Gregorian one after it, and the ten days that October 1582 skipped.
bool gregorianDate(const Date& t) {
  return t.y > 1582 || (t.y == 1582 && (t.m > 10 || (t.m == 10 && t.d >= 15)));
}

int daysInMonth(int y, int m, bool gregorian) {
  static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (m != 2) return days[m - 1];
  bool leap = gregorian ? (y % 4 == 0 && (y % 100 != 0 || y % 400 == 0)) : (y % 4 == 0);
  return leap ? 29 : 28;
}

Date nextDay(Date t) {
  if (t.y == 1582 && t.m == 10 && t.d == 4) return {1582, 10, 15};
  if (++t.d > daysInMonth(t.y, t.m, gregorianDate(t))) {
    t.d = 1;
    if (++t.m > 12) {
      t.m = 1;
      ++t.y;
    }
  }
  return t;
}

Date toDate(int mjd) {
  Date t{};
  ZQUtil::mjd2Date(mjd, t.y, t.m, t.d);
  return t;
}

}  // namespace

TEST(ZQUtilDate, KnownDays) {
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1858, 11, 17), 0);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1858, 11, 18), 1);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1858, 11, 16), -1);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1970, 1, 1), 40587);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(2000, 1, 1), 51544);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(2000, 2, 29), 51603);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(2000, 3, 1), 51604);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1900, 3, 1), 15079);  // 1900 had no 29 February
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1900, 2, 28), 15078);
}

TEST(ZQUtilDate, GregorianSwitch) {
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1582, 10, 15), ZQUtil::modifiedJulianDay(1582, 10, 4) + 1);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1582, 10, 15), -100840);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1582, 10, 4), -100841);
}

TEST(ZQUtilDate, JulianDaysBeforeTheSwitch) {
  // Julian 1000-01-01 is JD 2086307.5; 0001-01-01 is JD 1721423.5; 4713 BC January 1 is JD -0.5.
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1000, 1, 1), -313693);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1, 1, 1), -678577);
  EXPECT_EQ(ZQUtil::modifiedJulianDay(-4712, 1, 1), -2400001);
  // 1500 was a leap year in the Julian calendar.
  EXPECT_EQ(ZQUtil::modifiedJulianDay(1500, 3, 1) - ZQUtil::modifiedJulianDay(1500, 2, 28), 2);
}

TEST(ZQUtilDate, AgreesWithADayByDayCalendarAcrossTheSwitch) {
  Date t{1000, 1, 1};
  int mjd = -313693;
  for (; t.y < 2400; t = nextDay(t), ++mjd) {
    ASSERT_EQ(ZQUtil::modifiedJulianDay(t.y, t.m, t.d), mjd) << t.y << "-" << t.m << "-" << t.d;
    Date back = toDate(mjd);
    ASSERT_EQ(back, t) << mjd;
  }
}

TEST(ZQUtilDate, InverseSwitchesCalendarsAtTheFirstGregorianDay) {
  EXPECT_EQ(toDate(-100840), (Date{1582, 10, 15}));
  EXPECT_EQ(toDate(-100841), (Date{1582, 10, 4}));
  EXPECT_EQ(toDate(0), (Date{1858, 11, 17}));
  EXPECT_EQ(toDate(-2400001), (Date{-4712, 1, 1}));
}

TEST(ZQUtilDate, InverseRoundTripsFarOut) {
  for (int mjd = -3000000; mjd <= 3000000; mjd += 997) {
    Date t = toDate(mjd);
    ASSERT_EQ(ZQUtil::modifiedJulianDay(t.y, t.m, t.d), mjd) << mjd;
  }
}

TEST(ZQUtilDate, WeekDays) {
  EXPECT_EQ(ZQUtil::mjd2WeekDay(0), 3);                                        // Wednesday
  EXPECT_EQ(ZQUtil::mjd2WeekDay(ZQUtil::modifiedJulianDay(2000, 1, 1)), 6);    // Saturday
  EXPECT_EQ(ZQUtil::mjd2WeekDay(ZQUtil::modifiedJulianDay(1970, 1, 1)), 4);    // Thursday
  EXPECT_EQ(ZQUtil::mjd2WeekDay(ZQUtil::modifiedJulianDay(2024, 6, 9)), 0);    // Sunday
  EXPECT_EQ(ZQUtil::mjd2WeekDay(ZQUtil::modifiedJulianDay(1582, 10, 4)), 4);   // Thursday
  EXPECT_EQ(ZQUtil::mjd2WeekDay(ZQUtil::modifiedJulianDay(1582, 10, 15)), 5);  // Friday
  for (int mjd = -20; mjd < 20; ++mjd) {
    int w = ZQUtil::mjd2WeekDay(mjd);
    EXPECT_GE(w, 0);
    EXPECT_LT(w, 7);
    EXPECT_EQ((w + 1) % 7, ZQUtil::mjd2WeekDay(mjd + 1));
  }
}

TEST(ZQUtilDate, ExtremeArgumentsDoNotOverflow) {
  // No meaningful day, but no undefined arithmetic either.
  (void)ZQUtil::modifiedJulianDay(2147483647, 2147483647, 2147483647);
  (void)ZQUtil::modifiedJulianDay(-2147483647 - 1, -2147483647 - 1, -2147483647 - 1);
  int y, m, d;
  ZQUtil::mjd2Date(2147483647, y, m, d);
  ZQUtil::mjd2Date(-2147483647 - 1, y, m, d);
  EXPECT_GE(ZQUtil::mjd2WeekDay(-2147483647 - 1), 0);
  EXPECT_GE(m, 1);
  EXPECT_LE(m, 12);
}
