#include "zenutl/log.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <boost/filesystem.hpp>
#include <boost/thread/thread.hpp>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <map>
#include <regex>
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
using zenutl_test::TempDirTest;
using zenutl_test::WriteWholeFile;

// The log lives until its process ends, so every test that creates one does so in a child.
class LogTest : public TempDirTest {
 protected:
  std::string LogName() const { return File("app.log"); }
  std::vector<LogRecord> Records() const { return ParseLogFile(ReadWholeFile(LogName())); }
  // The message records of the log file, leaving out the opening ones.
  std::vector<LogRecord> Messages(const std::string& name) const {
    std::vector<LogRecord> messages;
    for (const LogRecord& record : ParseLogFile(ReadWholeFile(name))) {
      if (record.kind == LogRecord::kMessage) messages.push_back(record);
    }
    return messages;
  }
  std::vector<LogRecord> Messages() const { return Messages(LogName()); }
};

TEST(LogImportance, ConvertsBetweenIndexValueAndTextWithCriticalForAnythingUnknown) {
  EXPECT_EQ(Log::MinImportance, Log::Debug);
  EXPECT_EQ(Log::MaxImportance, Log::Critical);
  EXPECT_EQ(Log::NumImportanceLevels, 5u);
  struct Row {
    unsigned int index;
    Log::Importance importance;
    const char* text;
  };
  const Row rows[] = {{0, Log::Debug, "Debug"},
                      {1, Log::Information, "Information"},
                      {2, Log::Warning, "Warning"},
                      {3, Log::Error, "Error"},
                      {4, Log::Critical, "Critical"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(Log::IndexToImportance(row.index), row.importance);
    EXPECT_EQ(Log::ImportanceToIndex(row.importance), row.index);
    EXPECT_STREQ(Log::ImportanceToString(row.importance), row.text);
    EXPECT_EQ(Log::StringToImportance(row.text), row.importance);
  }
  for (unsigned int index : {5u, 6u, 1000u})
    EXPECT_EQ(Log::IndexToImportance(index), Log::Critical);
  for (int value : {-1, 5, 7, 99}) {
    SCOPED_TRACE(value);
    EXPECT_EQ(Log::ImportanceToIndex(static_cast<Log::Importance>(value)), 4u);
    EXPECT_STREQ(Log::ImportanceToString(static_cast<Log::Importance>(value)), "Critical");
  }
  struct TextRow {
    const char* text;
    Log::Importance expected;
  };
  const TextRow texts[] = {{"warning", Log::Warning}, {"DEBUG", Log::Debug},
                           {"eRRoR", Log::Error},     {"Warn", Log::Critical},
                           {"Debug ", Log::Critical}, {"", Log::Critical},
                           {nullptr, Log::Critical}};
  for (const TextRow& row : texts) {
    SCOPED_TRACE(row.text ? row.text : "(null)");
    EXPECT_EQ(Log::StringToImportance(row.text), row.expected);
  }
}

TEST_F(LogTest, EveryCallIsHarmlessWhileNoLogExistsAndAFailedCreationMayBeRetried) {
  ExpectPassesInChild([&] {
    const std::string missingFolder = File("missing/app.log");
    for (int round = 0; round < 2; ++round) {
      SCOPED_TRACE(round == 0 ? "before any creation" : "after failed creations");
      EXPECT_FALSE(Log::IsValid());
      for (unsigned int index = 0; index < Log::NumImportanceLevels; ++index) {
        EXPECT_FALSE(Log::CheckLogLevel(Log::IndexToImportance(index)));
      }
      EXPECT_FALSE(Log::SetLogLevel(Log::Debug));
      EXPECT_FALSE(Log::SetMaxFileSize(10));
      char buffer[16] = "untouched";
      EXPECT_FALSE(Log::GetBuffer(buffer, sizeof(buffer)));
      EXPECT_STREQ(buffer, "untouched");
      Log::WriteMessage("Class", "Function", "nowhere to go", Log::Critical, true);

      EXPECT_FALSE(Log::CreateInstance(""));
      EXPECT_FALSE(Log::CreateInstance(nullptr));
      EXPECT_FALSE(Log::CreateInstance(missingFolder.c_str()));
      EXPECT_FALSE(Log::CreateInstance("", Log::Debug, 100, 2));
      EXPECT_FALSE(Log::CreateInstance(missingFolder.c_str(), Log::Debug, 100, 2));
    }
    EXPECT_FALSE(boost::filesystem::exists(File("missing")));
    EXPECT_TRUE(Log::CreateInstance(LogName().c_str()));
    EXPECT_TRUE(Log::IsValid());
  });
}

TEST_F(LogTest, CreationAppendsAndRecordsTheLevelWhateverTheLevel) {
  struct Row {
    bool longForm;
    Log::Importance level;
    const char* expected;
  };
  const Row rows[] = {{false, Log::Critical, "Log level set to Critical."},
                      {true, Log::Critical, "Log level set to Critical."},
                      {true, Log::Debug, "Log level set to Debug."},
                      {true, Log::Warning, "Log level set to Warning."}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expected);
    WriteWholeFile(LogName(), "kept");
    ExpectPassesInChild([&] {
      ASSERT_TRUE(row.longForm ? Log::CreateInstance(LogName().c_str(), row.level, 1000000, 2)
                               : Log::CreateInstance(LogName().c_str()));
      const std::string content = ReadWholeFile(LogName());
      ASSERT_EQ(content.substr(0, 4), "kept");
      const std::vector<LogRecord> records = ParseLogFile(content.substr(4));
      ASSERT_EQ(records.size(), 2u);
      EXPECT_EQ(records[0].kind, LogRecord::kOpened);
      EXPECT_EQ(records[1].kind, LogRecord::kMessage);
      EXPECT_EQ(records[1].level, "Information");
      EXPECT_EQ(records[1].location, "[Log::CreateInstance()]");
      EXPECT_EQ(records[1].text, row.expected);
      for (unsigned int index = 0; index < Log::NumImportanceLevels; ++index) {
        const Log::Importance importance = Log::IndexToImportance(index);
        EXPECT_EQ(Log::CheckLogLevel(importance), importance >= row.level) << index;
      }
    });
  }
}

TEST_F(LogTest, SecondCreationFailsAndChangesNothing) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str(), Log::Debug, 300, 2));
    const std::string other = File("other.log");
    EXPECT_FALSE(Log::CreateInstance(other.c_str()));
    EXPECT_FALSE(Log::CreateInstance(other.c_str(), Log::Critical, 1000000, 0));
    EXPECT_FALSE(boost::filesystem::exists(other));
    EXPECT_TRUE(Log::CheckLogLevel(Log::Debug));
    // The size limit and the backups are still the first ones: 300 bytes, two numbered files.
    Log::WriteMessage(nullptr, nullptr, std::string(400, 'a').c_str(), Log::Debug, false);
    Log::WriteMessage(nullptr, nullptr, std::string(400, 'b').c_str(), Log::Debug, false);
    EXPECT_TRUE(boost::filesystem::exists(LogName() + ".0.bak"));
    EXPECT_TRUE(boost::filesystem::exists(LogName() + ".1.bak"));
  });
}

TEST_F(LogTest, WritesAtOrAboveTheLevelOrWhenForced) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str()));
    struct Row {
      Log::Importance level;  // set before writing
      Log::Importance importance;
      bool force;
      bool written;
    };
    const Row rows[] = {
        {Log::Critical, Log::Error, false, false}, {Log::Critical, Log::Critical, false, true},
        {Log::Critical, Log::Debug, true, true},   {Log::Warning, Log::Information, false, false},
        {Log::Warning, Log::Warning, false, true}, {Log::Warning, Log::Error, false, true},
        {Log::Debug, Log::Debug, false, true},     {Log::Error, Log::Information, true, true},
    };
    int number = 0;
    for (const Row& row : rows) {
      const std::string text = "message " + std::to_string(++number);
      SCOPED_TRACE(text);
      Log::SetLogLevel(row.level);
      Log::WriteMessage("C", "F", text.c_str(), row.importance, row.force);
      const std::vector<LogRecord> messages = Messages();
      ASSERT_FALSE(messages.empty());
      EXPECT_EQ(messages.back().text == text, row.written);
      if (row.written) {
        EXPECT_EQ(messages.back().level, Log::ImportanceToString(row.importance));
      }
    }
  });
}

TEST_F(LogTest, RecordHeaderShowsTheNamesThatAreGiven) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str()));
    struct Row {
      const char* className;
      const char* functionName;
      const char* location;
    };
    const Row rows[] = {{nullptr, nullptr, ""},
                        {nullptr, "Load", "[Load()]"},
                        {"Trail", nullptr, "[Trail]"},
                        {"Trail", "Load", "[Trail::Load()]"}};
    for (const Row& row : rows) {
      SCOPED_TRACE(row.location);
      Log::WriteMessage(row.className, row.functionName, "two\nlines", Log::Critical, false);
      const LogRecord last = Messages().back();
      EXPECT_EQ(last.location, row.location);
      EXPECT_EQ(last.level, "Critical");
      EXPECT_EQ(last.text, "two\nlines");
    }
  });
}

TEST_F(LogTest, SettersRecordOnlyRealChanges) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str()));
    EXPECT_TRUE(Log::SetLogLevel(Log::Critical));
    EXPECT_TRUE(Log::SetMaxFileSize(0x100000));
    EXPECT_EQ(Messages().size(), 1u);

    EXPECT_TRUE(Log::SetLogLevel(Log::Error));
    EXPECT_TRUE(Log::SetLogLevel(Log::Error));
    EXPECT_TRUE(Log::SetMaxFileSize(5000000));
    EXPECT_TRUE(Log::SetMaxFileSize(5000000));
    const std::vector<LogRecord> messages = Messages();
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_EQ(messages[1].location, "[Log::SetLogLevel()]");
    EXPECT_EQ(messages[1].level, "Information");
    EXPECT_EQ(messages[1].text, "Log level set to Error.");
    EXPECT_EQ(messages[2].location, "[Log::SetMaxFileSize()]");
    EXPECT_EQ(messages[2].text, "Max file size set to 5000000 bytes.");
  });
}

TEST_F(LogTest, StampsEveryRecordWithTheLocalOffset) {
  ExpectPassesInChild([&] {
    ::setenv("TZ", "XYZ3:30", 1);
    ::tzset();
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str()));
    Log::WriteMessage(nullptr, nullptr, "west of Greenwich", Log::Critical, false);
    const std::string content = ReadWholeFile(LogName());
    const std::regex stamp(zenutl_test::kStampPattern);
    int stamps = 0;
    for (std::sregex_iterator it(content.begin(), content.end(), stamp), end; it != end; ++it) {
      EXPECT_EQ(it->str().substr(it->length() - 7), "-03:30]");
      ++stamps;
    }
    EXPECT_EQ(stamps, 3) << content;
  });
}

TEST_F(LogTest, RotationChainsTheBackupsAndGetBufferReadsTheNewFile) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str(), Log::Debug, 500, 3));
    const std::string backup[] = {LogName() + ".0.bak", LogName() + ".1.bak", LogName() + ".2.bak"};
    // Each message is larger than the limit on its own and is moved aside at once.
    for (char letter : {'a', 'b', 'c', 'd'}) {
      Log::WriteMessage(nullptr, nullptr, std::string(600, letter).c_str(), Log::Debug, false);
    }
    struct Row {
      std::string file;
      std::string copiedTo;  // empty: the file starts with the opening record
      char letter;
    };
    const Row rows[] = {
        {backup[0], backup[2], 'd'}, {backup[1], backup[0], 'b'}, {backup[2], backup[1], 'c'}};
    for (const Row& row : rows) {
      SCOPED_TRACE(row.file);
      const std::vector<LogRecord> records = ParseLogFile(ReadWholeFile(row.file));
      ASSERT_EQ(records.size(), 2u);
      EXPECT_EQ(records[0].kind, LogRecord::kCopied);
      EXPECT_EQ(records[0].text, row.copiedTo);
      EXPECT_EQ(records[1].text, std::string(600, row.letter));
    }
    const std::string current = ReadWholeFile(LogName());
    EXPECT_EQ(current, "Logfile was copied to " + backup[0] + zenutl_test::kLogSeparator);

    std::vector<char> whole(current.size() + 50, 'X');
    ASSERT_TRUE(Log::GetBuffer(whole.data(), static_cast<unsigned int>(whole.size())));
    EXPECT_EQ(std::string(whole.data()), current);
    char tail[6];
    ASSERT_TRUE(Log::GetBuffer(tail, sizeof(tail)));
    EXPECT_STREQ(tail, "----\n");
  });
}

// Every thread writes numbered messages while another keeps changing the settings and reading
// the tail; the log and its backups must then hold each message exactly once, whole.
TEST_F(LogTest, ManyThreadsLoseNoRecordAcrossRotations) {
  ExpectPassesInChild([&] {
    const unsigned int kBackups = 200;
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str(), Log::Debug, 8000, kBackups));
    const int kThreads = 8;
    const int kMessages = 400;
    boost::thread_group writers;
    for (int thread = 0; thread < kThreads; ++thread) {
      writers.create_thread([thread] {
        for (int message = 0; message < kMessages; ++message) {
          const std::string text = "thread " + std::to_string(thread) + " message " +
                                   std::to_string(message) + " " + std::string(message % 97, '.');
          Log::WriteMessage("Worker", "Run", text.c_str(), Log::Warning, false);
        }
      });
    }
    boost::thread meddler([] {
      char tail[256];
      for (int round = 0; round < 200; ++round) {
        Log::SetMaxFileSize(round % 2 ? 8000 : 9000);
        Log::GetBuffer(tail, sizeof(tail));
        Log::CheckLogLevel(Log::Warning);
      }
    });
    writers.join_all();
    meddler.join();

    std::map<int, std::set<int>> seen;
    int duplicates = 0;
    int malformed = 0;
    int files = 0;
    std::vector<std::string> names = {LogName()};
    for (unsigned int index = 0; index < kBackups; ++index) {
      names.push_back(LogName() + "." + std::to_string(index) + ".bak");
    }
    for (const std::string& name : names) {
      if (!boost::filesystem::exists(name)) continue;
      ++files;
      for (const LogRecord& record : ParseLogFile(ReadWholeFile(name))) {
        if (record.kind == LogRecord::kMalformed) ++malformed;
        if (record.kind != LogRecord::kMessage || record.location != "[Worker::Run()]") continue;
        int thread = -1;
        int message = -1;
        char dots[128] = "";
        const int fields =
            std::sscanf(record.text.c_str(), "thread %d message %d %127s", &thread, &message, dots);
        ASSERT_GE(fields, 2) << record.text;
        EXPECT_EQ(record.text.size(), record.text.find(" ", record.text.find("message ") + 8) + 1 +
                                          static_cast<std::size_t>(message % 97));
        if (!seen[thread].insert(message).second) ++duplicates;
      }
    }
    EXPECT_GT(files, 20);
    EXPECT_EQ(malformed, 0);
    EXPECT_EQ(duplicates, 0);
    ASSERT_EQ(seen.size(), static_cast<std::size_t>(kThreads));
    for (const auto& thread : seen) {
      EXPECT_EQ(thread.second.size(), static_cast<std::size_t>(kMessages)) << thread.first;
    }
  });
}

// A file size limit stands in for a full disk: writes past it fail with EFBIG.
TEST_F(LogTest, KeepsRunningOnAFullDiskAndDropsWholeRecords) {
  ExpectPassesInChild([&] {
    ASSERT_TRUE(Log::CreateInstance(LogName().c_str(), Log::Debug, 1000000, 0));
    std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit original = limit;
    limit.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    for (int message = 0; message < 200; ++message) {
      Log::WriteMessage(nullptr, nullptr, ("full disk " + std::to_string(message)).c_str(),
                        Log::Debug, false);
    }
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &original), 0);
    Log::WriteMessage(nullptr, nullptr, "space again", Log::Debug, false);

    const std::string content = ReadWholeFile(LogName());
    EXPECT_LE(content.size(), 4096u + 200u);
    const std::vector<LogRecord> records = ParseLogFile(content);
    std::vector<std::string> texts;
    for (const LogRecord& record : records) {
      ASSERT_NE(record.kind, LogRecord::kMalformed);
      if (record.kind == LogRecord::kMessage) texts.push_back(record.text);
    }
    // The messages that fitted, in order, then nothing until there was room again.
    ASSERT_GE(texts.size(), 10u);
    ASSERT_LT(texts.size(), 100u);
    for (std::size_t i = 1; i + 1 < texts.size(); ++i) {
      EXPECT_EQ(texts[i], "full disk " + std::to_string(i - 1));
    }
    EXPECT_EQ(texts.back(), "space again");
  });
}

TEST_F(LogTest, DropsEverythingOnceItsFolderHasGoneAtARotation) {
  ExpectPassesInChild([&] {
    const std::string folder = File("logs");
    boost::filesystem::create_directories(folder);
    const std::string name = folder + "/app.log";
    ASSERT_TRUE(Log::CreateInstance(name.c_str(), Log::Debug, 2000, 2));
    Log::WriteMessage(nullptr, nullptr, "before", Log::Debug, false);
    boost::filesystem::remove_all(folder);
    for (int message = 0; message < 100; ++message) {
      Log::WriteMessage(nullptr, nullptr, "into the void", Log::Debug, false);
    }
    boost::filesystem::create_directories(folder);
    Log::WriteMessage(nullptr, nullptr, "still dropped", Log::Critical, true);
    char buffer[64];
    EXPECT_FALSE(Log::GetBuffer(buffer, sizeof(buffer)));
    EXPECT_TRUE(Log::SetLogLevel(Log::Error));
    EXPECT_TRUE(Log::IsValid());
    EXPECT_TRUE(boost::filesystem::is_empty(folder));
  });
}

}  // namespace
