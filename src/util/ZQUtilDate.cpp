// Modified Julian days: Gregorian from 1582-10-15 on, Julian before.
#include "common/ZQUtil.h"

namespace ZQCommonNS {

namespace {

// Division rounding down, so years before 1 follow the same cycles as the rest.
constexpr long long floorDiv(long long a, long long b) {
  long long q = a / b;
  return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

// The first Gregorian day, 1582-10-15.
constexpr int kGregorianStart = -100840;

}  // namespace

int ZQUtil::modifiedJulianDay(int year, int month, int day) {
  long long y = year;
  long long m = month;
  if (m <= 2) {  // January and February end the year before
    m += 12;
    y -= 1;
  }
  // Days of the months before `m`, counted from a year that starts in March.
  long long monthDays = (306 * (m + 1)) / 10 - 92;
  long long base = 365 * y + floorDiv(y, 4) + monthDays + day;
  bool gregorian = year > 1582 || (year == 1582 && (month > 10 || (month == 10 && day >= 15)));
  long long mjd = gregorian ? base + floorDiv(y, 400) - floorDiv(y, 100) - 678912 : base - 678914;
  return static_cast<int>(mjd);
}

void ZQUtil::mjd2Date(int mjd, int& year, int& month, int& day) {
  // Julian day number, then the day count from 1 March of year -4800.
  long long j = static_cast<long long>(mjd) + 2400001;
  long long b, c;
  if (mjd >= kGregorianStart) {
    long long a = j + 32044;
    b = floorDiv(4 * a + 3, 146097);
    c = a - floorDiv(146097 * b, 4);
  } else {
    b = 0;
    c = j + 32082;
  }
  long long d = floorDiv(4 * c + 3, 1461);
  long long e = c - floorDiv(1461 * d, 4);
  long long m = floorDiv(5 * e + 2, 153);
  day = static_cast<int>(e - floorDiv(153 * m + 2, 5) + 1);
  month = static_cast<int>(m + 3 - 12 * floorDiv(m, 10));
  year = static_cast<int>(100 * b + d - 4800 + floorDiv(m, 10));
}

int ZQUtil::mjd2WeekDay(int mjd) {
  // 1858-11-17, day 0, was a Wednesday.
  long long w = (static_cast<long long>(mjd) + 3) % 7;
  return static_cast<int>(w < 0 ? w + 7 : w);
}

}  // namespace ZQCommonNS
