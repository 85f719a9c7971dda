#include "zenutl/log.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <boost/filesystem.hpp>
#include <boost/thread/thread.hpp>
#include <csignal>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "diagnostics/log_records.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

namespace {

using zenutl_test::ExpectPassesInChild;
using zenutl_test::LogRecord;
using zenutl_test::ParseLogFile;
using zenutl_test::ReadWholeFile;

std::vector<LogRecord> Messages(const std::string& file) {
  std::vector<LogRecord> messages;
  for (const LogRecord& record : ParseLogFile(ReadWholeFile(file))) {
    if (record.kind == "message") messages.push_back(record);
  }
  return messages;
}

TEST(LogImportance, ConvertsIndexValueAndTextWithCriticalForAnythingUnknown) {
  const char* const texts[] = {"Debug", "Information", "Warning", "Error", "Critical"};
  for (unsigned int index = 0; index < Log::NumImportanceLevels; ++index) {
    const Log::Importance importance = Log::IndexToImportance(index);
    EXPECT_EQ(importance, static_cast<int>(index));
    EXPECT_EQ(Log::ImportanceToIndex(importance), index);
    EXPECT_STREQ(Log::ImportanceToString(importance), texts[index]);
  }
  EXPECT_EQ(Log::IndexToImportance(5), Log::Critical);
  for (int value : {-1, 5, 99}) {
    EXPECT_EQ(Log::ImportanceToIndex(static_cast<Log::Importance>(value)), 4u);
    EXPECT_STREQ(Log::ImportanceToString(static_cast<Log::Importance>(value)), "Critical");
  }
  const struct {
    const char* text;
    Log::Importance expected;
  } rows[] = {{"warning", Log::Warning}, {"DEBUG", Log::Debug},     {"eRRoR", Log::Error},
              {"Warn", Log::Critical},   {"Debug ", Log::Critical}, {nullptr, Log::Critical}};
  for (const auto& row : rows) EXPECT_EQ(Log::StringToImportance(row.text), row.expected);
}

// The log lives until its process ends, so each test that makes one runs in a child process.
class LogTest : public zenutl_test::TempDirTest {
 protected:
  const std::string name = File("app.log");
};

TEST_F(LogTest, EveryCallIsHarmlessWithoutALogAndFailedCreationsMayBeRetried) {
  ExpectPassesInChild([&] {
    const std::string missing = File("missing/app.log");
    for (int round = 0; round < 2; ++round) {
      EXPECT_FALSE(Log::IsValid());
      EXPECT_FALSE(Log::CheckLogLevel(Log::Critical));
      EXPECT_FALSE(Log::SetLogLevel(Log::Debug));
      EXPECT_FALSE(Log::SetMaxFileSize(10));
      char buffer[16] = "untouched";
      EXPECT_FALSE(Log::GetBuffer(buffer, sizeof(buffer)));
      EXPECT_STREQ(buffer, "untouched");
      Log::WriteMessage("Class", "Function", "nowhere to go", Log::Critical, true);
      for (const char* bad : {"", static_cast<const char*>(nullptr), missing.c_str()}) {
        EXPECT_FALSE(Log::CreateInstance(bad));
        EXPECT_FALSE(Log::CreateInstance(bad, Log::Debug, 100, 2));
      }
    }
    EXPECT_TRUE(Log::CreateInstance(name.c_str()));
    EXPECT_TRUE(Log::IsValid());
  });
}

TEST_F(LogTest, CreationAppendsRecordsTheLevelAndASecondCreationChangesNothing) {
  const struct {
    bool longForm;
    Log::Importance level;
    const char* record;
  } rows[] = {{false, Log::Critical, "Log level set to Critical."},
              {true, Log::Debug, "Log level set to Debug."},
              {true, Log::Warning, "Log level set to Warning."}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.record);
    zenutl_test::WriteWholeFile(name, "kept");
    ExpectPassesInChild([&] {
      ASSERT_TRUE(row.longForm ? Log::CreateInstance(name.c_str(), row.level, 300, 2)
                               : Log::CreateInstance(name.c_str()));
      EXPECT_FALSE(Log::CreateInstance(File("other.log").c_str()));
      EXPECT_FALSE(Log::CreateInstance(File("other.log").c_str(), Log::Error, 10, 0));
      EXPECT_FALSE(boost::filesystem::exists(File("other.log")));
      const std::string content = ReadWholeFile(name);
      ASSERT_EQ(content.substr(0, 4), "kept");
      const std::vector<LogRecord> records = ParseLogFile(content.substr(4));
      ASSERT_EQ(records.size(), 2u);
      EXPECT_EQ(records[0].kind, "opened");
      EXPECT_EQ(records[1].level + records[1].location, "Information[Log::CreateInstance()]");
      EXPECT_EQ(records[1].text, row.record);
      for (unsigned int index = 0; index < Log::NumImportanceLevels; ++index) {
        EXPECT_EQ(Log::CheckLogLevel(Log::IndexToImportance(index)),
                  static_cast<int>(index) >= row.level);
      }
    });
  }
}

TEST_F(LogTest, WritesAtOrAboveTheLevelOrWhenForcedWithTheNamesThatAreGiven) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(name.c_str()));
    const struct {
      Log::Importance level, importance;
      bool force;
      const char *className, *functionName, *location;  // location null: nothing written
    } rows[] = {
        {Log::Critical, Log::Error, false, "C", "F", nullptr},
        {Log::Critical, Log::Critical, false, "C", "F", "[C::F()]"},
        {Log::Critical, Log::Debug, true, "C", nullptr, "[C]"},
        {Log::Warning, Log::Information, false, "C", "F", nullptr},
        {Log::Warning, Log::Warning, false, nullptr, "F", "[F()]"},
        {Log::Debug, Log::Debug, false, nullptr, nullptr, ""},
        {Log::Error, Log::Information, true, "C", "F", "[C::F()]"},
    };
    for (const auto& row : rows) {
      const std::string text = "message\n" + std::to_string(&row - rows);
      SCOPED_TRACE(text);
      Log::SetLogLevel(row.level);
      Log::WriteMessage(row.className, row.functionName, text.c_str(), row.importance, row.force);
      const LogRecord last = Messages(name).back();
      EXPECT_EQ(last.text == text, row.location != nullptr);
      if (row.location) {
        EXPECT_EQ(last.level, Log::ImportanceToString(row.importance));
        EXPECT_EQ(last.location, row.location);
      }
    }
  });
}

TEST_F(LogTest, SettersRecordOnlyRealChanges) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(name.c_str()));
    for (int twice = 0; twice < 2; ++twice) {
      EXPECT_TRUE(Log::SetLogLevel(Log::Critical));
      EXPECT_TRUE(Log::SetMaxFileSize(0x100000));
    }
    for (int twice = 0; twice < 2; ++twice) {
      EXPECT_TRUE(Log::SetLogLevel(Log::Error));
      EXPECT_TRUE(Log::SetMaxFileSize(5000000));
    }
    const std::vector<LogRecord> messages = Messages(name);
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_EQ(messages[1].location + messages[1].text,
              "[Log::SetLogLevel()]Log level set to Error.");
    EXPECT_EQ(messages[2].location + messages[2].text,
              "[Log::SetMaxFileSize()]Max file size set to 5000000 bytes.");
  });
}

TEST_F(LogTest, RotationChainsTheBackupsAndGetBufferReadsTheNewFile) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(name.c_str(), Log::Debug, 500, 3));
    // Each message is larger than the limit by itself and is moved aside at once.
    for (char letter : {'a', 'b', 'c', 'd'}) {
      Log::WriteMessage(nullptr, nullptr, std::string(600, letter).c_str(), Log::Debug, false);
    }
    const struct {
      int index, copiedFrom;
      char letter;
    } rows[] = {{0, 2, 'd'}, {1, 0, 'b'}, {2, 1, 'c'}};
    for (const auto& row : rows) {
      SCOPED_TRACE(row.index);
      const auto records =
          ParseLogFile(ReadWholeFile(name + "." + std::to_string(row.index) + ".bak"));
      ASSERT_EQ(records.size(), 2u);
      EXPECT_EQ(records[0].kind + " " + records[0].text,
                "copied " + name + "." + std::to_string(row.copiedFrom) + ".bak");
      EXPECT_EQ(records[1].text, std::string(600, row.letter));
    }
    const std::string current = ReadWholeFile(name);
    EXPECT_EQ(current, "Logfile was copied to " + name + ".0.bak" + zenutl_test::kLogSeparator);
    std::vector<char> whole(current.size() + 50, 'X');
    ASSERT_TRUE(Log::GetBuffer(whole.data(), static_cast<unsigned int>(whole.size())));
    EXPECT_EQ(std::string(whole.data()), current);
  });
}

// Threads write numbered messages while another changes the limit and reads the tail; the log
// and its backups must then hold every message exactly once, whole.
TEST_F(LogTest, ManyThreadsLoseNoRecordAcrossRotations) {
  ExpectPassesInChild([&] {
    const unsigned int kBackups = 200;
    const int kThreads = 8, kMessages = 400;
    ASSERT_TRUE(Log::CreateInstance(name.c_str(), Log::Debug, 8000, kBackups));
    boost::thread_group threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.create_thread([thread] {
        for (int message = 0; message < kMessages; ++message) {
          const std::string text = std::to_string(thread) + " " + std::to_string(message) + " " +
                                   std::string(message % 97, '.');
          Log::WriteMessage("Worker", "Run", text.c_str(), Log::Warning, false);
        }
      });
    }
    threads.create_thread([] {
      char tail[256];
      for (int round = 0; round < 200; ++round) {
        Log::SetMaxFileSize(round % 2 ? 8000 : 9000);
        Log::GetBuffer(tail, sizeof(tail));
      }
    });
    threads.join_all();

    std::set<std::string> seen;
    int files = 0;
    for (unsigned int index = 0; index <= kBackups; ++index) {
      const std::string file =
          index == kBackups ? name : name + "." + std::to_string(index) + ".bak";
      if (!boost::filesystem::exists(file)) continue;
      ++files;
      std::vector<int> last(kThreads, -1);  // each thread's messages come in its order
      for (const LogRecord& record : ParseLogFile(ReadWholeFile(file))) {
        ASSERT_NE(record.kind, "malformed") << record.text;
        if (record.location == "[Worker::Run()]") {
          EXPECT_TRUE(seen.insert(record.text).second) << record.text;
          int thread = 0, message = 0;
          ASSERT_EQ(std::sscanf(record.text.c_str(), "%d %d", &thread, &message), 2);
          EXPECT_GT(message, last[thread]) << record.text;
          last[thread] = message;
        }
      }
    }
    EXPECT_GT(files, 20);
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kThreads * kMessages));
  });
}

// Each record is stamped in the zone in force when it is written, however quickly the zone
// changes: all of these are written within a few milliseconds.
TEST_F(LogTest, StampsEachRecordWithTheOffsetOfTheZoneInForceThen) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(name.c_str(), Log::Debug, 1000000, 0));
    const struct {
      const char* zone;
      const char* offset;
    } rows[] = {{"UTC0", "+00:00"},
                {"XYZ3:30", "-03:30"},
                {"Asia/Kathmandu", "+05:45"},
                {"UTC0", "+00:00"},
                {"Pacific/Pago_Pago", "-11:00"}};
    for (const auto& row : rows) {
      ::setenv("TZ", row.zone, 1);
      ::tzset();
      Log::WriteMessage(nullptr, nullptr, row.offset, Log::Debug, false);
    }
    const std::string content = ReadWholeFile(name);
    for (const auto& row : rows) {
      SCOPED_TRACE(row.zone);
      // "...<offset>] [Debug]\n<offset>": the stamp ends in the offset the text names.
      EXPECT_NE(content.find(std::string(row.offset) + "] [Debug]\n" + row.offset),
                std::string::npos);
    }
  });
}

// Rotation renames over the oldest backup in one step, so a reader never finds it missing.
TEST_F(LogTest, EveryBackupIsThereAtEveryMomentOfARotation) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(name.c_str(), Log::Debug, 10, 1));
    Log::WriteMessage(nullptr, nullptr, "first", Log::Debug, false);
    const std::string backup = name + ".bak";
    ASSERT_TRUE(boost::filesystem::exists(backup));
    std::atomic<bool> writing(true);
    std::atomic<int> looks(0), missing(0);
    boost::thread watcher([&] {
      while (writing) {
        ++looks;
        if (::access(backup.c_str(), F_OK) != 0) ++missing;
      }
    });
    for (int message = 0; message < 500; ++message) {
      Log::WriteMessage(nullptr, nullptr, "each one rotates", Log::Debug, false);
    }
    writing = false;
    watcher.join();
    EXPECT_GT(looks, 100);
    EXPECT_EQ(missing, 0);
  });
}

// Records of 8 MB: the kernel lets a kill stop a write between the chunks it copies, and a write
// this large has several (on the test machine, 14 in 20 such writes killed midway were torn).
// "<round> <message> xxx...", the numbers in fixed widths, so that the text can be numbered in
// place.
void NumberKillTestText(std::string& text, int round, int message) {
  char head[32];
  std::snprintf(head, sizeof head, "%04d %08d ", round % 10000, message % 100000000);
  text.replace(0, 14, head);
}
std::string KillTestText(int round, int message) {
  std::string text(8 << 20, 'x');
  NumberKillTestText(text, round, message);
  return text;
}

long long FileSize(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 ? static_cast<long long>(info.st_size) : -1;
}

// Processes killed while they write: every record in the log and its backups is whole. A record
// cut short by a kill is removed by the next process that opens the log. Three writers in four
// are killed the moment their file is seen growing, that is inside a write; the others at any
// time.
TEST_F(LogTest, AProcessKilledWhileItWritesLeavesOnlyWholeRecords) {
  std::mt19937 random(7);
  for (int round = 0; round < 16; ++round) {
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
      if (!Log::CreateInstance(name.c_str(), Log::Debug, 12 << 20, 3)) ::_exit(1);
      std::string text = KillTestText(round, 0);
      for (int message = 0;; ++message) {
        NumberKillTestText(text, round, message);
        Log::WriteMessage("Kill", "Test", text.c_str(), Log::Debug, false);
      }
    }
    if (round % 4 == 0) {
      // A second record begun means a first one whole, however slow the writer (sanitizers):
      // something for the count below to find.
      for (int wait = 0; wait < 3000 && FileSize(name) <= (8 << 20) + 4096; ++wait) ::usleep(10000);
      ::usleep(std::uniform_int_distribution<useconds_t>(1000, 100000)(random));
    } else {
      long long before = FileSize(name);
      for (int look = 0; look < 100000; ++look) {
        const long long now = FileSize(name);
        if (now > before + 4096 && before > 4096) break;
        before = now;
      }
    }
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself";
  }
  // Opened as the writers opened it: with the default limits it would rotate at once.
  ExpectPassesInChild(
      [&] { ASSERT_TRUE(Log::CreateInstance(name.c_str(), Log::Debug, 12 << 20, 3)); });

  int messages = 0;
  for (const std::string& file : {name, name + ".0.bak", name + ".1.bak", name + ".2.bak"}) {
    SCOPED_TRACE(file);
    if (!boost::filesystem::exists(file)) continue;
    for (const LogRecord& record : ParseLogFile(ReadWholeFile(file))) {
      ASSERT_NE(record.kind, "malformed") << record.text.substr(0, 200);
      if (record.kind != "message" || record.location != "[Kill::Test()]") continue;
      int round = -1, message = -1;
      ASSERT_EQ(std::sscanf(record.text.c_str(), "%d %d", &round, &message), 2);
      EXPECT_TRUE(record.text == KillTestText(round, message))
          << record.text.substr(0, 20) << "... of " << record.text.size() << " bytes";
      ++messages;
    }
  }
  EXPECT_GT(messages, 0);
}

// A file size limit stands in for a full disk: writes past it fail with EFBIG.
TEST_F(LogTest, KeepsRunningOnAFullDiskAndDropsWholeRecords) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(name.c_str(), Log::Debug, 1000000, 0));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit original, limit;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &original), 0);
    limit = original;
    limit.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    for (int message = 0; message < 200; ++message) {
      Log::WriteMessage(nullptr, nullptr, ("full " + std::to_string(message)).c_str(), Log::Debug,
                        false);
    }
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &original), 0);
    Log::WriteMessage(nullptr, nullptr, "room again", Log::Debug, false);

    std::vector<std::string> texts;
    for (const LogRecord& record : ParseLogFile(ReadWholeFile(name))) {
      ASSERT_NE(record.kind, "malformed") << record.text;
      texts.push_back(record.text);
    }
    // Opening, level, the messages that fitted in order, then the first after the limit.
    ASSERT_GT(texts.size(), 10u);
    ASSERT_LT(texts.size(), 100u);
    for (std::size_t i = 2; i + 1 < texts.size(); ++i)
      EXPECT_EQ(texts[i], "full " + std::to_string(i - 2));
    EXPECT_EQ(texts.back(), "room again");
  });
}

TEST_F(LogTest, DropsEverythingOnceItsFolderHasGoneAtARotation) {
  ExpectPassesInChild([&] {
    const std::string folder = File("logs");
    boost::filesystem::create_directories(folder);
    ASSERT_TRUE(Log::CreateInstance((folder + "/app.log").c_str(), Log::Debug, 2000, 2));
    boost::filesystem::remove_all(folder);
    for (int message = 0; message < 100; ++message) {
      Log::WriteMessage(nullptr, nullptr, "into the void", Log::Debug, false);
    }
    boost::filesystem::create_directories(folder);
    Log::WriteMessage(nullptr, nullptr, "still dropped", Log::Critical, true);
    char buffer[64];
    EXPECT_FALSE(Log::GetBuffer(buffer, sizeof(buffer)));
    EXPECT_TRUE(Log::SetLogLevel(Log::Error));
    EXPECT_TRUE(boost::filesystem::is_empty(folder));
  });
}

}  // namespace
