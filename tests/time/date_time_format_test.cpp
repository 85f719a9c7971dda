#include "zenutl/date_time_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/scoped_environment.h"
#include "zenutl/host_dialogs.h"

namespace {

using namespace ZnTimeUtl;
using zenutl_test::ScopedEnvironmentVariable;
using zenutl_test::ScopedTimeZone;

// The texts of the message boxes `format` makes ValidateFormatString show, and its answer.
std::vector<std::string> BoxesFor(const std::string& format, bool* valid) {
  std::vector<std::string> texts;
  ZnHostDialogs::ScopedMessageBoxHandler handler([&](const ZnHostDialogs::MessageBoxRequest& box) {
    EXPECT_EQ(box.style, static_cast<unsigned>(ZnHostDialogs::eOk));
    EXPECT_TRUE(box.caption.IsEmpty());
    texts.push_back(box.text.str());
    return static_cast<int>(ZnHostDialogs::eAnswerOk);
  });
  *valid = ValidateFormatString(format);
  return texts;
}

const char kRepeated[] =
    "Each format can only appear once in the format string. These appear more than once:\n";
const char kUnknown[] = "There are unknown formats in the format string. These are:\n";
const char kNeedsTt[] = "To use format 'h' or 'hh' the date must contain a AM/PM item ('tt').";

TEST(ValidateFormatString, ShowsOneBoxPerFaultAndPassesOnlyWithoutAny) {
  const struct {
    const char* format;
    std::vector<std::string> boxes;
  } rows[] = {
      {"", {}},
      {"yyyy-MM-dd HH:mm:ss.fff", {}},
      {"ddd dd MMM yy hh tt", {}},
      {"d dd ddd", {}},  // three day fields pass
      {"---",
       {"The format given:\n---\nis not valid. The format can only contain the alternatives "
        "found using the button 'Show Details'."}},
      {"yyyy yy", {std::string(kRepeated) + "year"}},
      {"d dd", {std::string(kRepeated) + "day"}},
      {"hh H:mm:m s ss.fff fff tt M MM",
       {std::string(kRepeated) + "month, hour, minute, second, millisecond",
        std::string(kUnknown) + " m s"}},
      {"yyy", {std::string(kUnknown) + " yyy"}},
      {"yyyy-MM-dd HH:mm:sseee", {std::string(kUnknown) + " eee"}},
      {"zz a zz Hh", {std::string(kRepeated) + "hour", std::string(kUnknown) + " a zz", kNeedsTt}},
      {"hh", {kNeedsTt}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.format);
    bool valid = false;
    EXPECT_EQ(BoxesFor(row.format, &valid), row.boxes);
    EXPECT_EQ(valid, row.boxes.empty());
  }
}

TEST(FormatLanguage, DoublesAndTheSmallestUnit) {
  const std::vector<CString> fields = {"dd", "MM", "ddd", "", "d"};
  EXPECT_EQ(GetDoublesInFormatString('d', fields), (std::vector<CString>{"dd", "ddd", "d"}));
  EXPECT_TRUE(GetDoublesInFormatString('y', fields).empty());

  const struct {
    const char* format;
    eTimeAccuracy accuracy;
  } rows[] = {
      {"yyyy-MM-dd HH:mm:sseee", eTimeAccuracySecond},
      {"fff", eTimeAccuracySecond},
      {"HH:mm", eTimeAccuracyMinute},
      {"h tt", eTimeAccuracyHour},
      {"ddd", eTimeAccuracyDay},
      {"MMM yy", eTimeAccuracyMonth},
      {"yy", eTimeAccuracyYear},
      {"m s y", eTimeAccuracyNone},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(GetSmallestDateTimeUnit(row.format), row.accuracy) << row.format;
  }
}

// The locales' own data, as Debian 12 ships it, in the format language.
TEST(FormatLanguage, LocaleFormatsComeFromTheSystemsLocaleData) {
  ScopedEnvironmentVariable all("LC_ALL", nullptr);
  ScopedEnvironmentVariable time("LC_TIME", nullptr);
  ScopedEnvironmentVariable lang("LANG", "de_DE.UTF-8");
  const struct {
    LocaleType locale;
    unsigned long identifier;
    const char* shortDate;
    const char* longDate;
    const char* time;
  } rows[] = {
      {eLocaleFrench, 0x000C, "dd/MM/yyyy", "ddd dd MMM yyyy", "HH:mm:ss"},
      {eLocaleEnglish, 0x0009, "MM/dd/yyyy", "ddd MMM d yyyy", "hh:mm:ss tt"},
      {eLocaleGerman, 0x0007, "dd.MM.yyyy", "ddd d. MMM yyyy", "HH:mm:ss"},
      {eLocaleSwedish, 0x001D, "yyyy-MM-dd", "ddd d MMM yyyy", "HH:mm:ss"},
      {eLocaleUser, 0x0400, "dd.MM.yyyy", "ddd d. MMM yyyy", "HH:mm:ss"},
      {static_cast<LocaleType>(7), 0x0400, "dd.MM.yyyy", "ddd d. MMM yyyy", "HH:mm:ss"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.identifier);
    EXPECT_EQ(GetLocaleIdentifier(row.locale), row.identifier);
    EXPECT_EQ(GetUserLocaleDate(true, row.locale), CString(row.shortDate));
    EXPECT_EQ(GetUserLocaleDate(false, row.locale), CString(row.longDate));
    EXPECT_EQ(GetUserLocaleTime(row.locale), CString(row.time));
    bool valid = false;
    EXPECT_TRUE(BoxesFor(std::string(row.shortDate) + " " + row.time, &valid).empty());
  }
  ScopedEnvironmentVariable missing("LANG", "xx_XX.UTF-8");  // not on the machine: "C"
  EXPECT_EQ(GetUserLocaleDate(true, eLocaleUser), CString("MM/dd/yy"));
  EXPECT_EQ(GetUserLocaleDate(false, eLocaleUser), CString("ddd MMM d yyyy"));
}

TEST(FormatLanguage, TranslatesToAndFromStrftimeFormats) {
  const struct {
    CString (*translate)(const std::string&);
    const char* format;
    const char* expected;
  } rows[] = {
      {DateTimeFormatToUserStyle, "%m/%d/%Y", "%m/dd/yyyy"},  // %m in the first five stays
      {DateTimeFormatToUserStyle, "%Y-%m-%d %H:%m", "yyyy-MM-dd HH:mm"},
      {DateTimeFormatToUserStyle, "%d.%m.%y %H:%M:%S", "dd.%m.yy HH:mm:ss"},
      {DateTimeFormatToUserStyle, "%#d.%#m %s.%f", "d.M ss.fff"},
      {DateTimeFormatToUserStyle, "yyyy-MM-dd", "yyyy-MM-dd"},
      {UserStyleToDateTimeFormat, "yyyy-MM-dd HH:mm:ss:fff", "%Y-%m-%d %H:%M:%S"},
      {UserStyleToDateTimeFormat, "d/M/yy h:mm tt", "%#d/%#m/%y h:%M %p"},
      {UserStyleToDateTimeFormat, "ddd d MMM H", "%a %#d %b %#H"},
      {UserStyleToDateTimeFormat, "hh.fff", "%I."},
      {UserStyleToDateTimeFormat, "yyy", "%%y"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.translate(row.format), CString(row.expected)) << row.format;
  }
}

TEST(FormatLanguage, FormatLocalAndUtcGiveStrftimeOrNothing) {
  ScopedTimeZone zone("Asia/Kolkata");
  EXPECT_EQ(FormatUtc(0, "%Y-%m-%d %H:%M:%S"), "1970-01-01 00:00:00");
  EXPECT_EQ(FormatLocal(0, "%Y-%m-%d %H:%M:%S"), "1970-01-01 05:30:00");
  EXPECT_EQ(FormatUtc(32535215999LL, "%Y-%m-%d"), "3000-12-31");
  EXPECT_EQ(FormatUtc(32535216000LL, "%Y-%m-%d"), "");
  EXPECT_EQ(FormatLocal(-1, "%Y"), "");
  EXPECT_EQ(FormatUtc(0, nullptr), "");
  EXPECT_EQ(FormatUtc(0, ""), "");
  EXPECT_EQ(FormatUtc(0, std::string(126, 'x').c_str()), std::string(126, 'x'));
  EXPECT_EQ(FormatUtc(0, std::string(127, 'x').c_str()), "");
}

TEST(IEEEDate2String, CountsDaysFrom1900WithItsMissingLeapDay) {
  const struct {
    double serial;
    const char* expected;
  } rows[] = {
      {0.5, "12:00:00"},
      {0.25 + 1.5 / 86400, "06:00:01"},
      {0.25 - 0.004 / 86400, "06:00:00"},  // rounded to the hundredth of a second
      {1.0, "01/01/00 00:00:00"},
      {59.0, "02/28/00 00:00:00"},
      {61.25, "03/01/00 06:00:00"},
      {366.0, "12/31/00 00:00:00"},  // 1900 has 366 days here
      {367.0, "01/01/01 00:00:00"},
      {1461.0, "12/31/03 00:00:00"},
      {40000.75, "07/06/09 18:00:00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(IEEEDate_2_string(row.serial), CString(row.expected)) << row.serial;
  }
  EXPECT_FALSE(IEEEDate_2_string(std::nan("")).IsEmpty());
  const struct {
    double serial;
    const char* message;
  } failures[] = {
      {60.0, "Day of month is not valid for year"},
      {3e6, "Year is out of valid range: 1400..9999"},
      {1e10, "Day of month value is out of range 1..31"},
  };
  for (const auto& failure : failures) {
    try {
      IEEEDate_2_string(failure.serial);
      ADD_FAILURE() << "no exception for " << failure.serial;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), failure.message) << failure.serial;
    }
  }
}

}  // namespace
