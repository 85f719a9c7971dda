#include "zenutl/lumo_date_time.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <ctime>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/scoped_environment.h"

namespace ZnTimeUtl {
void PrintTo(const LumoDateTime& time, std::ostream* out) {
  *out << boost::posix_time::to_simple_string(time.GetPtime());
}
}  // namespace ZnTimeUtl

namespace {

using boost::gregorian::date;
using boost::posix_time::hours;
using boost::posix_time::microseconds;
using boost::posix_time::milliseconds;
using boost::posix_time::ptime;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;
using zenutl_test::ScopedTimeZone;
using ZnTimeUtl::LumoDateTime;
using ZnTimeUtl::LumoDuration;

// The protected conversions and parser steps.
struct Exposed : LumoDateTime {
  using LumoDateTime::GetCurrentLocalTime;
  using LumoDateTime::GetNoOfChars;
  using LumoDateTime::ParseInternal;
  using LumoDateTime::ParseLiteralDateInternal;
  using LumoDateTime::ToLocalTime;
  using LumoDateTime::ToUTCTime;
};

LumoDateTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                long long microsecond = 0) {
  return LumoDateTime(
      ptime(date(year, month, day), hours(hour) + boost::posix_time::minutes(minute) +
                                        seconds(second) + microseconds(microsecond)));
}

const LumoDateTime kNotADateTime;
const LumoDateTime kPlusInfinity(ptime(boost::posix_time::pos_infin));

int CurrentUtcYear() {
  const time_t now = time(nullptr);
  tm fields{};
  gmtime_r(&now, &fields);
  return fields.tm_year + 1900;
}

// Checks that `statement` throws a std::out_of_range of Boost's calendar with `message`.
#define EXPECT_CALENDAR_ERROR(statement, message)        \
  do {                                                   \
    try {                                                \
      statement;                                         \
      ADD_FAILURE() << "no exception from " #statement;  \
    } catch (const std::out_of_range& error) {           \
      EXPECT_STREQ(error.what(), message) << #statement; \
    }                                                    \
  } while (0)

TEST(LumoDateTime, SecondsSince1970CountOnlyTheirLow32Bits) {
  EXPECT_EQ(LumoDateTime(0LL), At(1970, 1, 1));
  EXPECT_EQ(LumoDateTime(4294967296LL), At(1970, 1, 1));
  EXPECT_EQ(LumoDateTime(2147483647LL), At(2038, 1, 19, 3, 14, 7));
  EXPECT_EQ(LumoDateTime(2147483648LL), At(1901, 12, 13, 20, 45, 52));
  EXPECT_EQ(LumoDateTime(-1LL), At(1969, 12, 31, 23, 59, 59));
  EXPECT_EQ(LumoDateTime(ATL::CTime(4294967296LL + 60)), At(1970, 1, 1, 0, 1));
  EXPECT_EQ(LumoDateTime(), LumoDateTime(ptime(boost::posix_time::not_a_date_time)));
}

TEST(LumoDateTime, CalendarFieldsAreCheckedDayFirstByBoost) {
  EXPECT_EQ(LumoDateTime(2010, 3, 4, 5, 6, 7, 89, true), At(2010, 3, 4, 5, 6, 7, 89000));
  EXPECT_EQ(LumoDateTime(2010, 3, 4, 25, 0, 0, 1500, true), At(2010, 3, 5, 1, 0, 1, 500000));
  EXPECT_EQ(LumoDateTime(2010, 3, 4, -1, 30, 0, 0, true), At(2010, 3, 3, 22, 30));
  EXPECT_CALENDAR_ERROR(LumoDateTime(2010, 2, 30, 0, 0, 0, 0, true),
                        "Day of month is not valid for year");
  EXPECT_CALENDAR_ERROR(LumoDateTime(2010, 13, 0, 0, 0, 0, 0, true),
                        "Day of month value is out of range 1..31");
  EXPECT_CALENDAR_ERROR(LumoDateTime(2010, 13, 1, 0, 0, 0, 0, true),
                        "Month number is out of range 1..12");
  EXPECT_CALENDAR_ERROR(LumoDateTime(1399, 1, 1, 0, 0, 0, 0, true),
                        "Year is out of valid range: 1400..9999");
  EXPECT_CALENDAR_ERROR(LumoDateTime(10000, 1, 1, 0, 0, 0, 0, true),
                        "Year is out of valid range: 1400..9999");
  EXPECT_CALENDAR_ERROR(LumoDateTime(-1, 1, 1, 0, 0, 0, 0, true),
                        "Year is out of valid range: 1400..9999");
}

// Local fields take the offset of the zone at the same fields read as UTC; around a change
// that differs from the zone's own answer, which the rows marked "settled" show.
TEST(LumoDateTime, LocalFieldsBecomeUtcWithTheOffsetAtTheFieldsReadAsUtc) {
  const struct {
    const char* zone;
    LumoDateTime local;  // the fields, written as if UTC
    LumoDateTime utc;
  } rows[] = {
      {"UTC", At(2021, 7, 1, 12), At(2021, 7, 1, 12)},
      {"Europe/Stockholm", At(2021, 1, 15, 12), At(2021, 1, 15, 11)},
      {"Europe/Stockholm", At(2021, 7, 1, 12, 0, 0, 250000), At(2021, 7, 1, 10, 0, 0, 250000)},
      {"Europe/Stockholm", At(2021, 3, 28, 0, 30), At(2021, 3, 27, 23, 30)},
      {"Europe/Stockholm", At(2021, 3, 28, 1, 30), At(2021, 3, 27, 23, 30)},   // settled
      {"Europe/Stockholm", At(2021, 10, 31, 1, 30), At(2021, 10, 31, 0, 30)},  // settled
      {"America/New_York", At(2021, 3, 14, 1, 30), At(2021, 3, 14, 6, 30)},
      {"America/New_York", At(2021, 3, 14, 5, 0), At(2021, 3, 14, 10, 0)},  // settled
      {"America/New_York", At(2021, 7, 1, 12), At(2021, 7, 1, 16)},
      {"Australia/Lord_Howe", At(2021, 7, 1, 12), At(2021, 7, 1, 1, 30)},
      {"Australia/Lord_Howe", At(2021, 10, 3, 1, 0), At(2021, 10, 2, 14, 0)},  // settled
      {"Australia/Lord_Howe", At(2021, 12, 1, 12), At(2021, 12, 1, 1, 0)},
      {"Asia/Kolkata", At(2021, 6, 2, 1, 0), At(2021, 6, 1, 19, 30)},
      // Only the fields read as UTC need a local time: from 1970 until the 32-bit count of
      // seconds turns negative.
      {"Asia/Kolkata", At(1970, 1, 1, 5, 0), At(1969, 12, 31, 23, 30)},
      {"UTC", At(1969, 12, 31, 23, 59, 59), kNotADateTime},
      {"UTC", At(2038, 1, 19, 3, 14, 8), kNotADateTime},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.zone) + " " + row.local.ToUTCString(""));
    ScopedTimeZone zone(row.zone);
    EXPECT_EQ(Exposed::ToUTCTime(row.local), row.utc);
    const boost::posix_time::ptime fields = row.local.GetPtime();
    const time_duration ofDay = fields.time_of_day();
    EXPECT_EQ(LumoDateTime(fields.date().year(), fields.date().month(), fields.date().day(),
                           ofDay.hours(), ofDay.minutes(), ofDay.seconds(),
                           ofDay.fractional_seconds() / 1000, false),
              row.utc);
  }
}

TEST(LumoDateTime, ToLocalTimeFollowsTheZoneAndTheWrapPointsOfA32BitCount) {
  const struct {
    const char* zone;
    LumoDateTime utc;
    LumoDateTime local;
  } rows[] = {
      {"Europe/Stockholm", At(2021, 3, 28, 0, 59, 59, 500000), At(2021, 3, 28, 1, 59, 59, 500000)},
      {"Europe/Stockholm", At(2021, 3, 28, 1), At(2021, 3, 28, 3)},
      {"Europe/Stockholm", At(2021, 10, 31, 0, 30), At(2021, 10, 31, 2, 30)},
      {"Europe/Stockholm", At(2021, 10, 31, 1, 30), At(2021, 10, 31, 2, 30)},
      {"Australia/Lord_Howe", At(2021, 10, 2, 15, 29, 59), At(2021, 10, 3, 1, 59, 59)},
      {"Australia/Lord_Howe", At(2021, 10, 2, 15, 30), At(2021, 10, 3, 2, 30)},
      {"America/New_York", At(2021, 11, 7, 6, 0), At(2021, 11, 7, 1, 0)},
      {"UTC", At(1970, 1, 1), At(1970, 1, 1)},
      {"UTC", At(1969, 12, 31, 23, 59, 59, 999999), kNotADateTime},
      {"UTC", At(2038, 1, 19, 3, 14, 7, 999999), At(2038, 1, 19, 3, 14, 7, 999999)},
      {"UTC", At(2038, 1, 19, 3, 14, 8), kNotADateTime},
      {"UTC", At(2106, 2, 7, 6, 28, 15), kNotADateTime},
      {"UTC", At(2106, 2, 7, 6, 28, 16, 500000), At(1970, 1, 1, 0, 0, 0, 500000)},
      {"Asia/Kolkata", At(2106, 2, 7, 6, 28, 16), At(1970, 1, 1, 5, 30)},
      {"UTC", kNotADateTime, kNotADateTime},
      {"UTC", kPlusInfinity, kNotADateTime},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.zone) + " " + row.utc.ToUTCString(""));
    ScopedTimeZone zone(row.zone);
    EXPECT_EQ(Exposed::ToLocalTime(row.utc), row.local);
  }
}

TEST(LumoDateTime, RecordsConvertWithTheirOwnRules) {
  ScopedTimeZone zone("Europe/Stockholm");
  const tagTIMESTAMP_STRUCT odbc = {2021, 7, 1, 12, 30, 15, 123456789};
  EXPECT_EQ(LumoDateTime(odbc), At(2021, 7, 1, 10, 30, 15, 123456));
  const tagDBTIMESTAMP oledb = {2021, 1, 15, 12, 0, 0, 999};
  EXPECT_EQ(LumoDateTime(oledb), At(2021, 1, 15, 11));
  const tagDBTIMESTAMP badDay = {2021, 2, 29, 0, 0, 0, 0};
  EXPECT_CALENDAR_ERROR(LumoDateTime{badDay}, "Day of month is not valid for year");

  EXPECT_EQ(LumoDateTime(_FILETIME{0, 0}), At(1601, 1, 1));
  const unsigned long long ticks1970 = 116444736000000000ULL + 19;  // 1.9 microseconds on
  const _FILETIME fileTime = {static_cast<DWORD>(ticks1970), static_cast<DWORD>(ticks1970 >> 32)};
  EXPECT_EQ(LumoDateTime(fileTime), At(1970, 1, 1, 0, 0, 0, 1));
  const _FILETIME back = At(2021, 7, 1, 12, 0, 0, 1).ToFileTime();
  EXPECT_EQ(LumoDateTime(back), At(2021, 7, 1, 12, 0, 0, 1));
  const _FILETIME special = LumoDateTime().ToFileTime();  // the raw count times 10, wrapped
  EXPECT_EQ(static_cast<unsigned long long>(special.dwHighDateTime) << 32 | special.dwLowDateTime,
            0x7FFFFFFFFFFFFFFEULL * 10ULL);
}

TEST(LumoDateTime, VariantsGiveADateOnlyForVtDateInRange) {
  ScopedTimeZone zone("America/New_York");
  DATE byReference = 40000.75;
  const struct {
    VARTYPE type;
    double value;
    LumoDateTime expected;
  } rows[] = {
      {VT_DATE, 40000.5, At(2009, 7, 6, 16)},  // 12:00 EDT
      {VT_DATE | VT_BYREF, 0, At(2009, 7, 6, 22)},
      {VT_DATE, 25569.0, At(1970, 1, 1, 5)},
      {VT_DATE, 0.0, kNotADateTime},    // 1899-12-30, before 1970
      {VT_DATE, -1.25, kNotADateTime},  // 1899-12-29 06:00, the same
      {VT_DATE, 2900000.5, kNotADateTime},
      {VT_DATE, -350000.5, kNotADateTime},
      {VT_R8, 40000.5, kNotADateTime},
      {VT_I4, 0, kNotADateTime},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.value);
    tagVARIANT variant{};
    variant.vt = row.type;
    if (row.type & VT_BYREF) {
      variant.pdate = &byReference;
    } else {
      variant.date = row.value;
    }
    EXPECT_EQ(LumoDateTime(variant), row.expected);
  }
  tagVARIANT nullReference{};
  nullReference.vt = VT_DATE | VT_BYREF;
  EXPECT_EQ(LumoDateTime(nullReference), kNotADateTime);
}

TEST(LumoDateTime, ArithmeticFollowsBoostForSpecialValuesAndWrapsOrdinaryOnes) {
  const LumoDateTime noon = At(2010, 3, 4, 12);
  EXPECT_EQ(noon + LumoDuration(hours(13)), At(2010, 3, 5, 1));
  EXPECT_EQ(noon - LumoDuration(milliseconds(1)), At(2010, 3, 4, 11, 59, 59, 999000));
  EXPECT_EQ((noon - At(2010, 3, 3)).GetDuration(), hours(36));
  EXPECT_EQ(noon + boost::gregorian::date_duration(-4), At(2010, 2, 28, 12));
  EXPECT_EQ(kNotADateTime + boost::gregorian::date_duration(3), kNotADateTime);
  EXPECT_EQ(noon + boost::gregorian::date_duration(boost::gregorian::pos_infin), noon);
  EXPECT_EQ(noon + LumoDuration(), kNotADateTime);
  EXPECT_EQ((kPlusInfinity - kPlusInfinity).GetDuration(),
            time_duration(boost::posix_time::not_a_date_time));
  EXPECT_EQ(kPlusInfinity - LumoDuration(hours(1)), kPlusInfinity);
  // 2^63 ticks past a date wrap to a count below every date; no overflow trap fires.
  const LumoDuration huge(microseconds(0x7FFFFFFFFFFFFFF0LL));
  EXPECT_LT(noon + huge, At(1400, 1, 1));
  EXPECT_EQ((noon + huge) - huge, noon);
}

TEST(LumoDateTime, ToTimeTruncatesTowardZero) {
  EXPECT_EQ(At(1970, 1, 1, 0, 0, 0, 999000).ToTime(), 0);
  EXPECT_EQ(At(1969, 12, 31, 23, 59, 59, 500000).ToTime(), 0);
  EXPECT_EQ(At(2106, 2, 7, 6, 28, 16).ToTime(), 4294967296LL);
}

TEST(LumoDateTime, CurrentTimeHasWholeSecondsInTheZone) {
  ScopedTimeZone zone("Asia/Kolkata");
  const long long before = time(nullptr);
  const LumoDateTime utc = LumoDateTime::GetCurrentUTCTime();
  const LumoDateTime local = Exposed::GetCurrentLocalTime();
  const long long after = time(nullptr);
  EXPECT_GE(utc.ToTime(), before);
  EXPECT_LE(utc.ToTime(), after);
  EXPECT_EQ(utc.GetPtime().time_of_day().fractional_seconds(), 0);
  const long long offset = (local - utc).GetDuration().total_seconds();
  EXPECT_GE(offset, 19800);
  EXPECT_LE(offset, 19800 + (after - before));
}

TEST(LumoDateTime, StreamFormIsAVersionByteAndTheDurationSince1900) {
  const struct {
    LumoDateTime time;
    std::string bytes;
  } rows[] = {
      {At(2010, 3, 4, 5, 6, 7, 89000), std::string("\x01\x01\x71\x26\x8f\x79\x29\x03\0\0", 10)},
      {At(1900, 1, 1), std::string("\x01\x01\0\0\0\0\0\0\0\0", 10)},
      {At(1899, 12, 31, 23, 59, 59), std::string("\x01\x01\x18\xfc\xff\xff\xff\xff\xff\xff", 10)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.time.ToUTCString(""));
    std::stringstream stream;
    EXPECT_TRUE(row.time.WriteToStream(stream));
    EXPECT_EQ(stream.str(), row.bytes);
    LumoDateTime back;
    EXPECT_TRUE(back.ReadFromStream(stream));
    EXPECT_EQ(back, row.time);
  }
}

TEST(LumoDateTime, StreamFormOfNotADateTimeIsTheVersionByteAloneAndMisreadsWhatFollows) {
  std::stringstream stream;
  EXPECT_FALSE(kNotADateTime.WriteToStream(stream));
  EXPECT_EQ(stream.str(), "\x01");
  EXPECT_TRUE(LumoDuration(seconds(1)).WriteToStream(stream));
  LumoDateTime misread;
  EXPECT_TRUE(misread.ReadFromStream(stream));
  EXPECT_EQ(misread, At(1900, 1, 1, 0, 0, 1));  // the duration taken for the date-time

  LumoDateTime kept = At(2010, 1, 1);
  std::istringstream wrongVersion("\x02\x01");
  EXPECT_FALSE(kept.ReadFromStream(wrongVersion));
  EXPECT_EQ(kept, At(2010, 1, 1));
  std::istringstream wrongInnerVersion(std::string("\x01\x02\0\0\0\0\0\0\0\0", 10));
  EXPECT_TRUE(kept.ReadFromStream(wrongInnerVersion));
  EXPECT_EQ(kept, kNotADateTime);
  std::istringstream empty;
  EXPECT_FALSE(kept.ReadFromStream(empty));
  EXPECT_EQ(kept, At(1900, 1, 1));
}

// ---- Text ---------------------------------------------------------------------------------

TEST(LumoDateTime, ToUTCStringWritesEachFieldAsTheLanguageSays) {
  const LumoDateTime sample = At(2010, 3, 4, 5, 6, 7, 89000);
  const struct {
    LumoDateTime time;
    const char* format;
    const char* expected;
  } rows[] = {
      {sample, "", "2010-03-04 05:06:07.89"},
      {At(2010, 3, 4, 5, 6, 7), "", "2010-03-04 05:06:07"},
      {sample, "yyyy yy yyy y", "2010 10  "},
      {At(2005, 1, 1), "yy", "5"},
      {sample, "MMM MM M MMMM", "Mar 03 3 "},
      {sample, "ddd dd d dddd", "Thu 04 4 "},
      {sample, "HH H hh h tt mm m ss s", "05 5 05 5 AM 06 6 07 7"},
      {At(2010, 3, 4, 13, 0), "hh h tt", "01 1 PM"},
      {At(2010, 3, 4, 12, 0), "h tt", "12 AM"},
      {At(2010, 3, 4, 0, 0), "hh h tt", "00 0 AM"},
      {At(2010, 3, 4, 0, 0, 0, 5000), "fff|eee|ff|ee", "5|.5||"},
      {At(2010, 3, 4), "fff|eee", "0|"},
      {sample, "Week z, x: 'yyyy'", "Wk z, x: '2010'"},
      {At(1601, 1, 1), "", "1601-01-01 00:00:00"},
      {kNotADateTime, "yyyy", ""},
      {kPlusInfinity, "yyyy", "+infinity"},
      {LumoDateTime(ptime(boost::posix_time::neg_infin)), "", "-infinity"},
      {LumoDateTime(_FILETIME{0xFFFFFFFF, 0x7FFFFFFF}), "yyyy-MM-dd", "30828-09-14"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.format);
    EXPECT_EQ(row.time.ToUTCString(row.format), row.expected);
  }
}

TEST(LumoDateTime, ToLocalStringShowsTheZonesWallClockOrNothing) {
  ScopedTimeZone zone("Australia/Lord_Howe");
  EXPECT_EQ(At(2021, 10, 2, 15, 30, 0, 7000).ToLocalString(""), "2021-10-03 02:30:00.7");
  EXPECT_EQ(At(2021, 7, 1).ToLocalString("HH:mm"), "10:30");
  EXPECT_EQ(At(1969, 7, 1).ToLocalString("HH:mm"), "");
}

// The parser works in local time; UTC keeps the expected values plain.
TEST(LumoDateTime, ParseExactReadsFieldsWithEveryQuirk) {
  ScopedTimeZone zone("UTC");
  const int year = CurrentUtcYear();
  const int nextCentury = (year + 5) % 100 + 1;  // the first two-digit year read as 19xx
  const std::string lastOfThisCentury = std::to_string(nextCentury - 1);
  const std::string firstOfLastCentury = std::to_string(nextCentury % 100);
  const struct {
    const char* text;
    const char* format;
    LumoDateTime expected;
  } rows[] = {
      {"2010-03-04 05:06:07", "yyyy-MM-dd HH:mm:ss", At(2010, 3, 4, 5, 6, 7)},
      {"2010x03", "yyyy-MM", At(2010, 3, 1)},
      {"  2010 - 3", "yyyy-M", At(2010, 3, 1)},
      {"2010", "yyyy-MM-dd HH", At(2010, 1, 1)},
      {"", "yyyy", At(year, 1, 1)},
      {"7/4", "M/d", At(year, 7, 4)},
      {"12:30 PM", "hh:mm tt", At(year, 1, 2, 0, 30)},
      {"12:30 am", "hh:mm tt", At(year, 1, 1, 12, 30)},
      {"3 2", "h t", At(year, 1, 2, 3)},
      {"99", "yy", At(1999, 1, 1)},
      {lastOfThisCentury.c_str(), "yy", At(2000 + nextCentury - 1, 1, 1)},
      {"ab", "yy", At(1999, 1, 1)},  // an unreadable year counts as -1
      {"Wednesday 17 Mar 2010", "ddd dd MMM yyyy", At(2010, 3, 17)},
      {"fri,maj 7,2010", "ddd,MMM d,yyyy", At(2010, 5, 7)},
      {"05.5", "ss.fff", At(year, 1, 1, 0, 0, 5, 500000)},
      {"05.12345", "ss.fff", At(year, 1, 1, 0, 0, 5, 123000)},
      {"05.7", "ss.fff-", At(year, 1, 1, 0, 0, 12)},  // no '-' in the text: 7 * 1000 ms
      {"-04-2010", "ddd-dd-yyyy", At(2010, 1, 4)},    // an empty weekday before its '-'
      {"24:00", "HH:mm", kNotADateTime},
      {"13", "MM", kNotADateTime},
      {"0 AM", "h tt", kNotADateTime},
      {"2010-1", "yyyy-MMMM", kNotADateTime},
      {"2", "yyyy", At(1999, 1, 1)},
      {"05.", "ss.fff", At(year, 1, 1, 0, 0, 5)},  // the text ran out first
      {"May 2010", "MMM yyyy", kNotADateTime},
      {"05.x", "ss.fff", kNotADateTime},
      {"1969", "yyyy", kNotADateTime},
      {firstOfLastCentury.c_str(), "yy", kNotADateTime},  // 19xx, before 1970
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " by " + row.format);
    EXPECT_EQ(LumoDateTime::ParseExact(row.text, row.format), row.expected);
  }
  EXPECT_CALENDAR_ERROR(LumoDateTime::ParseExact("31-04-2010", "dd-MM-yyyy"),
                        "Day of month is not valid for year");
  EXPECT_CALENDAR_ERROR(LumoDateTime::ParseExact("Monday", "ddd"),
                        "Day of month value is out of range 1..31");
}

TEST(LumoDateTime, ParsedLocalTextRoundTripsThroughToLocalStringInEachZone) {
  for (const char* zoneName :
       {"Europe/Stockholm", "America/New_York", "Australia/Lord_Howe", "Asia/Kolkata", "UTC"}) {
    SCOPED_TRACE(zoneName);
    ScopedTimeZone zone(zoneName);
    for (const LumoDateTime& utc : {At(2021, 1, 15, 12), At(2021, 7, 1, 23, 59, 59)}) {
      const std::string text = utc.ToLocalString("dd.MM.yyyy HH:mm:ss");
      EXPECT_EQ(LumoDateTime::ParseExact(text, "dd.MM.yyyy HH:mm:ss"), utc) << text;
    }
  }
}

TEST(LumoDateTime, ParseUsingAscTimeKnowsOnlyTheSwedishMay) {
  ScopedTimeZone zone("UTC");
  EXPECT_EQ(LumoDateTime::ParseUsingAscTime("Mon May 03 10:11:12 2010"), kNotADateTime);
  EXPECT_EQ(LumoDateTime::ParseUsingAscTime("Mon Maj 03 10:11:12 2010"),
            At(2010, 5, 3, 10, 11, 12));
  EXPECT_EQ(LumoDateTime::ParseUsingAscTime("Thu Mar 04 05:06:07 2010\n"), At(2010, 3, 4, 5, 6, 7));
}

TEST(LumoDateTime, ParseUsingLocaleTriesTheLocalesInOrderAndKeepsTheFirstThatReads) {
  ScopedTimeZone zone("UTC");
  zenutl_test::ScopedEnvironmentVariable all("LC_ALL", "en_US.UTF-8");
  const struct {
    const char* text;
    LumoDateTime expected;
    const char* format;
  } rows[] = {
      {"03/04/2010 05:06:07 PM", At(2010, 3, 4, 17, 6, 7), "MM/dd/yyyy hh:mm:ss tt"},
      {"04.03.2010 05:06:07", At(2010, 4, 3, 5, 6, 7), "MM/dd/yyyy hh:mm:ss tt"},
      {"04.03.2010 13:06:07", At(2010, 3, 4, 13, 6, 7), "dd/MM/yyyy HH:mm:ss"},  // French first
      {"2010-03-04 05:06:07", At(2010, 3, 4, 5, 6, 7), "yyyy-MM-dd HH:mm:ss"},
      {"no date", kNotADateTime, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    std::string format;
    EXPECT_EQ(LumoDateTime::ParseUsingLocale(row.text, format), row.expected);
    EXPECT_EQ(format, row.format);
  }
  std::string given = "yyyy";
  EXPECT_EQ(LumoDateTime::ParseUsingLocale("2010-03-04", given), At(2010, 1, 1));
  EXPECT_EQ(given, "yyyy");
}

TEST(LumoDateTime, ParserStepsMoveTheCursorsToTheLastCharacterRead) {
  const struct {
    const char* text;
    const char* format;
    int value;
    int textMoved;
    int formatMoved;
  } rows[] = {
      {"2010-03", "yyyy-MM", 2010, 3, 3},
      {"7/4", "M/d", 7, 0, 0},
      {"12/4", "M/d", 12, 1, 0},
      {"Wednesday,", "ddd,", 0, 8, 2},
      {"5", "fff", 500, 1, 2},
      {",5", "fff,", -1, -1, 2},
      {"PM", "tt", 1, 1, 1},
      {"", "h", -1, 0, 0},
      {"20", "yyyy", -1, 2, 3},  // never past the end
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " by " + row.format);
    const std::string text = std::string("_") + row.text;  // room for a step back
    const char* textCursor = text.c_str() + 1;
    const char* formatCursor = row.format;
    EXPECT_EQ(Exposed::ParseInternal(textCursor, formatCursor), row.value);
    EXPECT_EQ(textCursor - (text.c_str() + 1), row.textMoved);
    EXPECT_EQ(formatCursor - row.format, row.formatMoved);
  }
  const char* run = "MMMx";
  EXPECT_EQ(Exposed::GetNoOfChars(run), 3);
  EXPECT_EQ(*run, 'M');
  EXPECT_EQ(*(run + 1), 'x');
}

TEST(LumoDateTime, MonthNamesAreTheSwedishThreeLetterOnes) {
  const struct {
    const char* name;
    int month;
  } rows[] = {{"jan", 1},   {"FEB", 2},  {"Mar", 3},  {"apr", 4},  {"maj", 5},
              {"jun", 6},   {"jul", 7},  {"aug", 8},  {"sep", 9},  {"okt", -1},
              {"oct", 10},  {"nov", 11}, {"dec", 12}, {"may", -1}, {"nxec", 12},
              {"NOEC", 12}, {"nec", -1}, {"n", -1},   {"", -1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Exposed::ParseLiteralDateInternal(row.name), row.month);
  }
}

}  // namespace
