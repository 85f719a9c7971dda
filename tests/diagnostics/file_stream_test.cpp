#include "diagnostics/file_stream.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "diagnostics/log_records.h"
#include "platform/log_file_io.h"
#include "support/temp_dir.h"

namespace {

using zenutl_test::LogRecord;
using zenutl_test::ParseLogRecord;
using zenutl_test::ReadWholeFile;
using zenutl_test::SplitLogRecords;
using zenutl_test::TempDirTest;
using zenutl_test::WriteWholeFile;

const std::string kSeparator = zenutl_test::kLogSeparator;

class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    const char* old = std::getenv("TZ");
    hadOld_ = old != nullptr;
    if (hadOld_) old_ = old;
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~ScopedTimeZone() {
    if (hadOld_) {
      ::setenv("TZ", old_.c_str(), 1);
    } else {
      ::unsetenv("TZ");
    }
    ::tzset();
  }

 private:
  bool hadOld_ = false;
  std::string old_;
};

TEST(FileStream, StampsLocalTimeWithItsOffsetFromUtc) {
  struct Row {
    const char* zone;
    long long seconds;
    int milliseconds;
    const char* expected;
  };
  const Row rows[] = {
      {"UTC0", 0, 0, "[1970-01-01 00:00:00.000+00:00]"},
      {"XYZ3:30", 0, 5, "[1969-12-31 20:30:00.005-03:30]"},
      {"Europe/Stockholm", 1306843327, 93, "[2011-05-31 14:02:07.093+02:00]"},
      {"Europe/Stockholm", 1295092800, 999, "[2011-01-15 13:00:00.999+01:00]"},
      {"America/St_Johns", 1295092800, 10, "[2011-01-15 08:30:00.010-03:30]"},
      {"Asia/Kathmandu", 1295092800, 0, "[2011-01-15 17:45:00.000+05:45]"},
      {"Pacific/Kiritimati", 1295092800, 0, "[2011-01-16 02:00:00.000+14:00]"},
      {"Pacific/Pago_Pago", 1295092800, 0, "[2011-01-15 01:00:00.000-11:00]"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.zone) + " " + std::to_string(row.seconds));
    ScopedTimeZone zone(row.zone);
    EXPECT_STREQ(FileStream::FormatTimeStamp(row.seconds, row.milliseconds), row.expected);
  }
}

class FileStreamTest : public TempDirTest {
 protected:
  std::string LogName() const { return File("app.log"); }
};

TEST_F(FileStreamTest, ChoosesTheLowestFreeBackupIndexThenGoesRoundRobin) {
  struct Row {
    unsigned int count;
    std::vector<int> existing;
    std::vector<std::string> expected;
  };
  const Row rows[] = {
      {3, {}, {".0.bak", ".1.bak", ".2.bak", ".0.bak", ".1.bak"}},
      {3, {0}, {".1.bak", ".2.bak", ".0.bak", ".1.bak"}},
      {3, {1}, {".0.bak", ".1.bak", ".2.bak"}},
      {3, {0, 2}, {".1.bak", ".2.bak", ".0.bak"}},
      {3, {0, 1, 2}, {".0.bak", ".1.bak", ".2.bak", ".0.bak"}},
      {2, {1}, {".0.bak", ".1.bak", ".0.bak"}},
      {1, {0}, {".bak", ".bak"}},
      {0, {}, {".bak", ".bak", ".bak"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE("count " + std::to_string(row.count) + ", " + std::to_string(row.existing.size()) +
                 " on disk");
    boost::filesystem::remove_all(Dir());
    boost::filesystem::create_directories(Dir());
    for (int index : row.existing) {
      WriteWholeFile(LogName() + "." + std::to_string(index) + ".bak", "old");
    }
    FileStream stream;
    ASSERT_TRUE(stream.Open(LogName().c_str()));
    stream.SetBackupCount(row.count);
    for (const std::string& suffix : row.expected) {
      EXPECT_EQ(std::string(stream.NextBackupName()), LogName() + suffix);
    }
  }
}

TEST_F(FileStreamTest, KeepsAFileExactlyAtTheLimitAndMovesItAsideOneByteLater) {
  FileStream stream;
  ASSERT_TRUE(stream.Open(LogName().c_str()));
  const std::string opening = ReadWholeFile(LogName());
  const std::string text = "exactly to the limit";
  stream.SetMaxSize(static_cast<long>(opening.size() + text.size() + kSeparator.size()));

  stream.WriteMessage(text.c_str());
  EXPECT_EQ(ReadWholeFile(LogName()), opening + text + kSeparator);
  EXPECT_FALSE(boost::filesystem::exists(LogName() + ".bak"));

  stream.WriteMessage("x");
  EXPECT_EQ(ReadWholeFile(LogName() + ".bak"), opening + text + kSeparator + "x" + kSeparator);
  EXPECT_EQ(ReadWholeFile(LogName()), "Logfile was copied to " + LogName() + ".bak" + kSeparator);

  stream.WriteMessage("next");
  EXPECT_EQ(ReadWholeFile(LogName()),
            "Logfile was copied to " + LogName() + ".bak" + kSeparator + "next" + kSeparator);
}

TEST_F(FileStreamTest, GoesOnInTheSameFileWhenTheBackupCannotBeMade) {
  // A non-empty folder in the backup's place can be neither removed nor replaced by a file.
  boost::filesystem::create_directories(LogName() + ".bak/inside");
  FileStream stream;
  ASSERT_TRUE(stream.Open(LogName().c_str()));
  stream.SetMaxSize(10);
  stream.WriteMessage("first");
  stream.WriteMessage("second");

  const std::vector<std::string> records = SplitLogRecords(ReadWholeFile(LogName()));
  ASSERT_EQ(records.size(), 5u);
  EXPECT_EQ(ParseLogRecord(records[0]).kind, LogRecord::kOpened);
  EXPECT_EQ(records[1], "first");
  EXPECT_EQ(records[2], "Logfile was copied to " + LogName() + ".bak");
  EXPECT_EQ(records[3], "second");
  EXPECT_EQ(records[4], records[2]);
  EXPECT_TRUE(boost::filesystem::is_directory(LogName() + ".bak/inside"));
}

// A disk that takes `gWriteBudget` more bytes and then reports itself full.
long gWriteBudget = 0;
ssize_t WriteIntoBudget(int descriptor, const void* data, std::size_t size) {
  if (gWriteBudget <= 0) {
    errno = ENOSPC;
    return -1;
  }
  const std::size_t now = std::min(size, static_cast<std::size_t>(gWriteBudget));
  gWriteBudget -= static_cast<long>(now);
  return ::write(descriptor, data, now);
}

TEST_F(FileStreamTest, DropsARecordWholeWhenTheDiskTakesOnlyPartOfIt) {
  for (long budget : {0L, 1L, 7L, 30L}) {
    SCOPED_TRACE("bytes the disk still takes: " + std::to_string(budget));
    boost::filesystem::remove(LogName());
    FileStream stream;
    ASSERT_TRUE(stream.Open(LogName().c_str()));
    stream.WriteMessage("before");
    const std::string before = ReadWholeFile(LogName());

    gWriteBudget = budget;
    const zenutl::platform::WriteFunction original =
        zenutl::platform::SetLogWriteFunction(&WriteIntoBudget);
    stream.WriteMessage("a record longer than what the disk still takes");
    zenutl::platform::SetLogWriteFunction(original);
    EXPECT_EQ(ReadWholeFile(LogName()), before);

    stream.WriteMessage("after");
    EXPECT_EQ(ReadWholeFile(LogName()), before + "after" + kSeparator);
  }
}

TEST_F(FileStreamTest, GetBufferGivesTheTailZeroTerminatedAndWritingGoesOn) {
  FileStream stream;
  ASSERT_TRUE(stream.Open(LogName().c_str()));
  stream.WriteMessage("some text to read back");
  const std::string content = ReadWholeFile(LogName());
  const unsigned int length = static_cast<unsigned int>(content.size());

  struct Row {
    unsigned int size;
    std::string expected;
  };
  const Row rows[] = {
      {length + 100, content},
      {length + 1, content},
      {length, content.substr(1)},
      {10, content.substr(length - 9)},
      {1, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE("size " + std::to_string(row.size));
    std::vector<char> buffer(row.size + 8, 'X');
    ASSERT_TRUE(stream.GetBuffer(buffer.data(), row.size));
    EXPECT_EQ(std::string(buffer.data()), row.expected);
    for (unsigned int i = row.size; i < buffer.size(); ++i) ASSERT_EQ(buffer[i], 'X') << i;
    EXPECT_TRUE(stream.IsOpen());
  }
  char untouched = 'X';
  EXPECT_FALSE(stream.GetBuffer(&untouched, 0));
  EXPECT_EQ(untouched, 'X');

  stream.WriteMessage("later");
  EXPECT_EQ(ReadWholeFile(LogName()), content + "later" + kSeparator);
}

TEST_F(FileStreamTest, LosesItsFileForGoodWhenGetBufferFindsItGone) {
  const std::string folder = File("logs");
  boost::filesystem::create_directories(folder);
  const std::string name = folder + "/app.log";
  FileStream stream;
  ASSERT_TRUE(stream.Open(name.c_str()));
  boost::filesystem::remove_all(folder);

  char buffer[64] = {};
  EXPECT_FALSE(stream.GetBuffer(buffer, sizeof(buffer)));
  EXPECT_FALSE(stream.IsOpen());
  boost::filesystem::create_directories(folder);
  stream.WriteMessage("dropped");
  EXPECT_FALSE(boost::filesystem::exists(name));
}

TEST_F(FileStreamTest, OpensByAppendingAndClosesWithAClosingRecord) {
  WriteWholeFile(LogName(), "earlier content");
  {
    FileStream stream;
    EXPECT_FALSE(stream.Open(""));
    EXPECT_FALSE(stream.Open(File("no/such/folder.log").c_str()));
    ASSERT_TRUE(stream.Open(LogName().c_str()));
    stream.WriteMessage("body");
  }
  const std::string content = ReadWholeFile(LogName());
  ASSERT_EQ(content.compare(0, 15, "earlier content"), 0);
  const std::vector<std::string> records = SplitLogRecords(content.substr(15));
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(ParseLogRecord(records[0]).kind, LogRecord::kOpened);
  EXPECT_EQ(records[1], "body");
  EXPECT_EQ(ParseLogRecord(records[2]).kind, LogRecord::kClosed);
}

TEST_F(FileStreamTest, TakesWindowsSeparatorsInTheName) {
  boost::filesystem::create_directories(File("sub"));
  std::string windowsName = File("sub") + "\\app.log";
  FileStream stream;
  ASSERT_TRUE(stream.Open(windowsName.c_str()));
  stream.SetMaxSize(1);
  stream.WriteMessage("moved");
  EXPECT_TRUE(boost::filesystem::exists(File("sub/app.log.bak")));
  EXPECT_EQ(ReadWholeFile(File("sub/app.log")),
            "Logfile was copied to " + windowsName + ".bak" + kSeparator);
}

}  // namespace
