#include "diagnostics/file_stream.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cerrno>
#include <ctime>
#include <string>
#include <vector>

#include "diagnostics/log_records.h"
#include "platform/file_calls.h"
#include "support/temp_dir.h"

namespace {

using zenutl_test::ReadWholeFile;
const std::string kSeparator = zenutl_test::kLogSeparator;

TEST(FileStream, StampsLocalTimeWithItsOffsetFromUtc) {
  const struct {
    const char* zone;
    long long seconds;
    int milliseconds;
    const char* expected;
  } rows[] = {
      {"UTC0", 0, 0, "[1970-01-01 00:00:00.000+00:00]"},
      {"XYZ3:30", 0, 5, "[1969-12-31 20:30:00.005-03:30]"},
      {"Europe/Stockholm", 1306843327, 93, "[2011-05-31 14:02:07.093+02:00]"},
      {"Europe/Stockholm", 1295092800, 999, "[2011-01-15 13:00:00.999+01:00]"},
      {"Asia/Kathmandu", 1295092800, 0, "[2011-01-15 17:45:00.000+05:45]"},
      {"Pacific/Pago_Pago", 1295092800, 0, "[2011-01-15 01:00:00.000-11:00]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.zone);
    ::setenv("TZ", row.zone, 1);
    ::tzset();
    EXPECT_STREQ(FileStream::FormatTimeStamp(row.seconds, row.milliseconds), row.expected);
  }
  ::unsetenv("TZ");
  ::tzset();
}

class FileStreamTest : public zenutl_test::TempDirTest {
 protected:
  void SetUp() override { ASSERT_TRUE(stream.Open(name.c_str())); }
  std::string Content() const { return ReadWholeFile(name); }
  const std::string name = File("app.log");
  FileStream stream;
};

TEST_F(FileStreamTest, ChoosesTheLowestFreeBackupIndexThenGoesRoundRobin) {
  const struct {
    unsigned int count;
    std::vector<int> onDisk;
    std::vector<std::string> expected;
  } rows[] = {
      {3, {}, {".0.bak", ".1.bak", ".2.bak", ".0.bak"}},
      {3, {0}, {".1.bak", ".2.bak", ".0.bak"}},
      {3, {1}, {".0.bak", ".1.bak", ".2.bak"}},
      {3, {0, 2}, {".1.bak", ".2.bak"}},
      {3, {0, 1, 2}, {".0.bak", ".1.bak"}},
      {1, {0}, {".bak", ".bak"}},
      {0, {}, {".bak", ".bak"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE("count " + std::to_string(row.count) + ", on disk " +
                 std::to_string(row.onDisk.size()));
    for (int index = 0; index < 3; ++index)
      boost::filesystem::remove(name + "." + std::to_string(index) + ".bak");
    for (int index : row.onDisk)
      zenutl_test::WriteWholeFile(name + "." + std::to_string(index) + ".bak", "x");
    stream.SetBackupCount(row.count);
    for (const std::string& suffix : row.expected) {
      EXPECT_EQ(std::string(stream.NextBackupName()), name + suffix);
    }
  }
}

TEST_F(FileStreamTest, KeepsAFileExactlyAtTheLimitAndMovesItAsideOneByteLater) {
  const std::string opening = Content();
  stream.SetMaxSize(static_cast<long>(opening.size() + 4 + kSeparator.size()));
  stream.WriteMessage("fits");
  EXPECT_EQ(Content(), opening + "fits" + kSeparator);
  stream.WriteMessage("x");
  EXPECT_EQ(ReadWholeFile(name + ".bak"), opening + "fits" + kSeparator + "x" + kSeparator);
  stream.WriteMessage("next");
  EXPECT_EQ(Content(), "Logfile was copied to " + name + ".bak" + kSeparator + "next" + kSeparator);
}

TEST_F(FileStreamTest, GoesOnInTheSameFileWhenTheBackupCannotBeMade) {
  // A folder with something in it can be neither removed nor replaced by the file.
  boost::filesystem::create_directories(name + ".bak/inside");
  const std::string opening = Content();
  const std::string claim = "Logfile was copied to " + name + ".bak" + kSeparator;
  stream.SetMaxSize(10);
  stream.WriteMessage("first");
  stream.WriteMessage("second");
  EXPECT_EQ(Content(), opening + "first" + kSeparator + claim + "second" + kSeparator + claim);
}

// A disk that takes `gBudget` more bytes and then is full.
long gBudget = 0;
ssize_t WriteWithinBudget(int descriptor, const void* data, std::size_t size) {
  if (gBudget <= 0) return errno = ENOSPC, -1;
  const std::size_t now = std::min(size, static_cast<std::size_t>(gBudget));
  gBudget -= static_cast<long>(now);
  return ::write(descriptor, data, now);
}

TEST_F(FileStreamTest, DropsARecordWholeWhenTheDiskTakesOnlyPartOfIt) {
  for (long budget : {0L, 1L, 30L}) {
    SCOPED_TRACE(budget);
    const std::string before = Content();
    gBudget = budget;
    zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
    calls.write = &WriteWithinBudget;
    {
      zenutl::platform::ScopedFileCalls nearlyFull(calls);
      stream.WriteMessage("a record longer than what the disk still takes");
    }
    EXPECT_EQ(Content(), before);
    stream.WriteMessage("after");
    EXPECT_EQ(Content(), before + "after" + kSeparator);
  }
}

// A writer killed in the middle of a record leaves its first part; the next stream to open the
// file cuts it off when it starts as a record of the log does, and leaves anything else.
TEST(FileStreamTornTail, OpeningCutsOffWhatAKilledWriterLeftOfARecord) {
  const std::string whole = "[2011-05-31 14:02:07.093+02:00] [Debug]\ntext" + kSeparator;
  const struct {
    std::string content, kept;
  } rows[] = {
      {whole + "[2011-05-31 14:02:07.094+02:00] [De", whole},
      {whole + "[2011", whole},
      {whole + kSeparator.substr(0, 5), whole},
      {kSeparator.substr(0, 1), ""},
      {"Logfile was cop", ""},
      {"Logfile was copied to x.bak", ""},
      {"kept", "kept"},
      {"[no separator before]", "[no separator before]"},
      {whole + "added by hand", whole + "added by hand"},
      {whole, whole},
  };
  zenutl_test::TempDir dir;
  const std::string name = dir.File("app.log");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.content);
    zenutl_test::WriteWholeFile(name, row.content);
    FileStream stream;
    ASSERT_TRUE(stream.Open(name.c_str()));
    EXPECT_EQ(ReadWholeFile(name).substr(0, row.kept.size() + 1), row.kept + "\n");
  }
  // While another stream has the file open, its last record may still be on its way.
  FileStream writing;
  ASSERT_TRUE(writing.Open(name.c_str()));
  const std::string unfinished = ReadWholeFile(name) + "[2011-05-31 14:02:07.094+02:00] [De";
  zenutl_test::WriteWholeFile(name, unfinished);
  FileStream second;
  ASSERT_TRUE(second.Open(name.c_str()));
  EXPECT_EQ(ReadWholeFile(name).substr(0, unfinished.size()), unfinished);
}

TEST_F(FileStreamTest, GetBufferGivesTheTailZeroTerminatedAndWritingGoesOn) {
  const std::string content = Content();
  const unsigned int length = static_cast<unsigned int>(content.size());
  const struct {
    unsigned int size;
    std::string expected;
  } rows[] = {{length + 100, content},
              {length + 1, content},
              {length, content.substr(1)},
              {10, content.substr(length - 9)},
              {1, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.size);
    std::vector<char> buffer(row.size + 8, 'X');
    ASSERT_TRUE(stream.GetBuffer(buffer.data(), row.size));
    EXPECT_EQ(std::string(buffer.data()), row.expected);
    EXPECT_EQ(std::string(buffer.begin() + row.size, buffer.end()), "XXXXXXXX");
  }
  char untouched = 'X';
  EXPECT_FALSE(stream.GetBuffer(&untouched, 0));
  EXPECT_EQ(untouched, 'X');
  stream.WriteMessage("later");
  EXPECT_EQ(Content(), content + "later" + kSeparator);
}

}  // namespace
