#include "zenutl/lumo_duration.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/time_formatters.hpp>

#include <cmath>
#include <sstream>
#include <stdexcept>

namespace {

using boost::posix_time::hours;
using boost::posix_time::microseconds;
using boost::posix_time::milliseconds;
using boost::posix_time::minutes;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;
using ZnTimeUtl::LumoDuration;

const time_duration kNotADateTime(boost::posix_time::not_a_date_time);
const time_duration kPlusInfinity(boost::posix_time::pos_infin);
const time_duration kMinusInfinity(boost::posix_time::neg_infin);

TEST(LumoDuration, ConstructorsNarrowAndTruncateAsTheOriginalBuild) {
  const struct {
    const char* what;
    LumoDuration made;
    time_duration expected;
  } rows[] = {
      {"default", LumoDuration(), kNotADateTime},
      {"zero asked for", LumoDuration(0, 0, 0, 0, 0), time_duration(0, 0, 0)},
      {"milliseconds", LumoDuration(milliseconds(1500)), milliseconds(1500)},
      {"span", LumoDuration(ATL::CTimeSpan(1, 2, 3, 4)), hours(26) + minutes(3) + seconds(4)},
      {"span of 2^31 s", LumoDuration(ATL::CTimeSpan(2147483648LL)), seconds(-2147483648LL)},
      {"span of 2^32 + 5 s", LumoDuration(ATL::CTimeSpan(4294967301LL)), seconds(5)},
      {"1.0009 s", LumoDuration(1.0009L), milliseconds(1000)},
      {"-1.0019 s", LumoDuration(-1.0019L), milliseconds(-1001)},
      {"not a number", LumoDuration(std::nanl("")), kNotADateTime},
      {"beyond the ticks", LumoDuration(1e13L), kPlusInfinity},
      {"below the ticks", LumoDuration(-1e13L), kMinusInfinity},
      {"mixed signs", LumoDuration(0, 1, -30, 0, 0), minutes(30)},
      {"all parts", LumoDuration(1, -1, 1, -1, 1001), hours(23) + minutes(1) + milliseconds(1)},
      {"32-bit hours wrap", LumoDuration(89478486, 0, 0, 0, 0), hours(-2147483632)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(row.made.GetDuration(), row.expected);
  }
}

TEST(LumoDuration, ToTimeSpanSplitsByTruncatingDivision) {
  const struct {
    time_duration duration;
    long long days, hours, minutes, seconds;
  } rows[] = {
      {hours(50) + minutes(3) + seconds(4) + milliseconds(999), 2, 2, 3, 4},
      {-(hours(50) + minutes(3) + seconds(4)), -2, -2, -3, -4},
      {microseconds(999999), 0, 0, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(boost::posix_time::to_simple_string(row.duration));
    const ATL::CTimeSpan span = LumoDuration(row.duration).ToTimeSpan();
    EXPECT_EQ(span.GetDays(), row.days);
    EXPECT_EQ(span.GetHours(), row.hours);
    EXPECT_EQ(span.GetMinutes(), row.minutes);
    EXPECT_EQ(span.GetSeconds(), row.seconds);
  }
}

TEST(LumoDuration, DivisionCutsBothToMillisecondsAndNarrowsTheQuotient) {
  EXPECT_EQ(LumoDuration(seconds(5)) / LumoDuration(seconds(2)), 2);
  EXPECT_EQ(LumoDuration(microseconds(5999)) / LumoDuration(microseconds(2999)), 2);
  EXPECT_EQ(LumoDuration(seconds(-5)) / LumoDuration(seconds(2)), -2);
  EXPECT_EQ(LumoDuration(milliseconds(4294967299LL)) / LumoDuration(milliseconds(1)), 3);
  EXPECT_EQ(LumoDuration(milliseconds(2147483648LL)) / LumoDuration(milliseconds(1)),
            -2147483647 - 1);
  EXPECT_THROW(LumoDuration(seconds(5)) / LumoDuration(microseconds(999)), std::domain_error);
  EXPECT_THROW(LumoDuration(seconds(5)) / LumoDuration(0, 0, 0, 0, 0), std::domain_error);
}

TEST(LumoDuration, MultiplicationFollowsBoostForSpecialValuesAndWrapsOrdinaryOnes) {
  EXPECT_EQ((LumoDuration(seconds(3)) * -2).GetDuration(), seconds(-6));
  EXPECT_EQ((LumoDuration(kPlusInfinity) * 0).GetDuration(), kNotADateTime);
  EXPECT_EQ((LumoDuration(kPlusInfinity) * -3).GetDuration(), kMinusInfinity);
  EXPECT_EQ((LumoDuration() * 2).GetDuration(), kNotADateTime);
  // 2^62 microseconds doubled is 2^63, which wraps to the lowest count: negative infinity.
  EXPECT_EQ((LumoDuration(microseconds(1LL << 62)) * 2).GetDuration(), kMinusInfinity);
  EXPECT_EQ((LumoDuration(microseconds(1LL << 62)) * 4).GetDuration(), microseconds(0));
}

TEST(LumoDuration, TextAndSecondsKeepWhatTheyPromise) {
  EXPECT_EQ(LumoDuration(-(hours(1) + minutes(2) + seconds(3) + microseconds(4))).ToString(),
            "-01:02:03.000004");
  EXPECT_EQ(LumoDuration().ToString(), "not-a-date-time");
  EXPECT_EQ(LumoDuration(kPlusInfinity).ToString(), "+infinity");
  EXPECT_EQ(LumoDuration(microseconds(1000999)).GetSecondsAsDouble(), 1.0L);
  EXPECT_EQ(LumoDuration(milliseconds(-1500)).GetSecondsAsDouble(), -1.5L);
  // The whole seconds are narrowed to 32 bits.
  EXPECT_EQ(LumoDuration(seconds(2147483648LL) + milliseconds(250)).GetSecondsAsDouble(),
            -2147483648.0L + 0.25L);
}

TEST(LumoDuration, StreamFormIsAVersionByteAndSignedMilliseconds) {
  const struct {
    time_duration duration;
    std::string bytes;
    time_duration readBack;
  } rows[] = {
      {microseconds(1999), std::string("\x01\x01\0\0\0\0\0\0\0", 9), milliseconds(1)},
      {seconds(-1), std::string("\x01\x18\xfc\xff\xff\xff\xff\xff\xff", 9), seconds(-1)},
      {kNotADateTime, std::string("\x01\xf7\x53\xe3\xa5\x9b\xc4\x20\x00", 9),
       microseconds(9223372036854775000LL)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(boost::posix_time::to_simple_string(row.duration));
    std::stringstream stream;
    EXPECT_TRUE(LumoDuration(row.duration).WriteToStream(stream));
    EXPECT_EQ(stream.str(), row.bytes);
    LumoDuration back;
    EXPECT_TRUE(back.ReadFromStream(stream));
    EXPECT_EQ(back.GetDuration(), row.readBack);
  }
}

TEST(LumoDuration, ReadingStopsAtAWrongVersionAndGivesZeroAtTheEnd) {
  LumoDuration kept(seconds(7));
  std::istringstream wrongVersion(std::string("\x02\x01\0\0\0\0\0\0\0", 9));
  EXPECT_FALSE(kept.ReadFromStream(wrongVersion));
  EXPECT_EQ(kept.GetDuration(), seconds(7));
  std::istringstream empty;
  EXPECT_FALSE(kept.ReadFromStream(empty));
  EXPECT_EQ(kept.GetDuration(), seconds(0));
  std::istringstream cut(std::string("\x01\xe8\x03", 3));  // 1000 ms, cut after two bytes
  EXPECT_FALSE(kept.ReadFromStream(cut));
  EXPECT_EQ(kept.GetDuration(), seconds(1));
}

TEST(FractionalToMillisec, TakesTheMillisecondsBelowOneSecondWithTheSign) {
  EXPECT_EQ(ZnTimeUtl::FractionalToMillisec(microseconds(1999)), 1);
  EXPECT_EQ(ZnTimeUtl::FractionalToMillisec(microseconds(-1999)), -1);
  EXPECT_EQ(ZnTimeUtl::FractionalToMillisec(milliseconds(2345)), 345);
  EXPECT_EQ(ZnTimeUtl::FractionalToMillisec(seconds(7)), 0);
}

}  // namespace
