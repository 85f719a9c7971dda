#include "zenutl/log_user_comm.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <functional>
#include <string>
#include <vector>

#include "diagnostics/log_records.h"
#include "support/child_process.h"
#include "support/temp_dir.h"
#include "zenutl/language_string.h"

namespace {

using zenutl_test::ExpectPassesInChild;
using zenutl_test::LogRecord;
using zenutl_test::ParseLogFile;
using zenutl_test::ReadWholeFile;
using zenutl_test::TempDirTest;

std::string AnswerText(unsigned int id) {
  return LanguageString::Get(id);
}

TEST(LogUserComm, AnswersWithTheDefaultAndRecordsTheQuestionWithTheAnswersName) {
  struct Row {
    const char* name;
    std::function<int(LogUserComm&, int)> ask;
    bool withInformation;
  };
  const Row rows[] = {
      {"AskUserYesNo/4", [](LogUserComm& c, int a) { return c.AskUserYesNo("Q", "I", "T", a); },
       true},
      {"AskUserYesNo/3", [](LogUserComm& c, int a) { return c.AskUserYesNo("Q", "T", a); }, false},
      {"AskUserYesYesToAllNoNoToAllCancel",
       [](LogUserComm& c, int a) { return c.AskUserYesYesToAllNoNoToAllCancel("Q", "I", "T", a); },
       true},
      {"AskUserYesYesToAllCancel",
       [](LogUserComm& c, int a) { return c.AskUserYesYesToAllCancel("Q", "I", "T", a); }, true},
      {"AskUserYesCancel",
       [](LogUserComm& c, int a) { return c.AskUserYesCancel("Q", "I", "T", a); }, true},
  };
  struct Answer {
    int code;
    unsigned int textId;
  };
  const Answer answers[] = {{1, 0x42BF}, {2, 0x42C0}, {3, 0x42C1}, {4, 0x42C2},
                            {5, 0x42C3}, {0, 0x42C4}, {6, 0x42C4}, {-1, 0x42C4}};
  for (const Row& row : rows) {
    for (const Answer& answer : answers) {
      SCOPED_TRACE(std::string(row.name) + " answer " + std::to_string(answer.code));
      LogUserComm comm;
      EXPECT_EQ(row.ask(comm, answer.code), answer.code);
      const std::string expected = std::string(row.withInformation ? "User information: I\n" : "") +
                                   "User question: Q\nWe answered: " + AnswerText(answer.textId);
      EXPECT_EQ(std::string(comm.GetLastUserQuestion()), expected);
      EXPECT_STREQ(comm.GetLastError(), "");
    }
  }
  // The texts of the answers are distinct, so the table above tells them apart.
  EXPECT_NE(AnswerText(0x42BF), AnswerText(0x42C4));
}

TEST(LogUserComm, KeepsErrorsAndQuestionsApartWithLoggingOffAndTakesNullAsEmpty) {
  LogUserComm comm;
  EXPECT_FALSE(comm.GetLogging());
  comm.FatalError("disk on fire", "Title");
  EXPECT_STREQ(comm.GetLastError(), "disk on fire");
  EXPECT_STREQ(comm.GetLastUserQuestion(), "");

  comm.AskUserYesNo(nullptr, nullptr, 3);
  EXPECT_EQ(std::string(comm.GetLastUserQuestion()),
            "User question: \nWe answered: " + AnswerText(0x42C1));
  comm.InformUser("it is done", "Title", 0x40);
  EXPECT_STREQ(comm.GetLastUserQuestion(), "User information: it is done");
  EXPECT_STREQ(comm.GetLastError(), "disk on fire");
  comm.InformUser(nullptr, nullptr, 0);
  EXPECT_STREQ(comm.GetLastUserQuestion(), "User information: ");
  comm.FatalError(nullptr, nullptr);
  EXPECT_STREQ(comm.GetLastError(), "");

  comm.SetLogging(true);
  comm.FatalError("copied along", "T");
  const LogUserComm copy(comm);
  LogUserComm assigned;
  assigned = comm;
  for (const LogUserComm* other : {&copy, static_cast<const LogUserComm*>(&assigned)}) {
    EXPECT_TRUE(other->GetLogging());
    EXPECT_STREQ(other->GetLastError(), "copied along");
    EXPECT_STREQ(other->GetLastUserQuestion(), "User information: ");
  }
}

class LogUserCommLogTest : public TempDirTest {};

TEST_F(LogUserCommLogTest, WritesExchangesToTheLogOnlyWithLoggingOnAndAsItsLevelAllows) {
  ExpectPassesInChild([&] {
    LogUserComm comm;
    const std::string name = File("user.log");
    comm.SetLogFile(name.c_str());
    comm.SetLogFile(File("second.log").c_str());
    EXPECT_FALSE(boost::filesystem::exists(File("second.log")));

    // The log's level is Critical: nothing of the channel's gets through.
    comm.SetLogging(true);
    comm.AskUserYesCancel("at Critical", "I", "T", 1);
    comm.FatalError("at Critical", "T");

    comm.SetLogLevel(Log::Information);
    comm.SetLogging(false);
    comm.AskUserYesCancel("logging off", "I", "T", 1);
    comm.FatalError("logging off", "T");
    comm.InformUser("logging off", "T", 0);

    comm.SetLogging(true);
    comm.AskUserYesCancel("Q", "I", "T", 2);
    comm.AskUserYesNo("Q3", "T", 5);
    comm.InformUser("note", "T", 0);
    comm.FatalError("broken", "T");
    comm.SetLogLevel(Log::Error);
    comm.InformUser("below Error", "T", 0);
    comm.FatalError("still Error", "T");

    std::vector<LogRecord> messages;
    for (const LogRecord& record : ParseLogFile(ReadWholeFile(name))) {
      if (record.kind == LogRecord::kMessage && record.location.empty()) {
        messages.push_back(record);
      }
    }
    struct Expected {
      const char* level;
      std::string text;
    };
    const Expected expected[] = {
        {"Information",
         "User information: I\nUser question: Q\nWe answered: " + AnswerText(0x42C0)},
        {"Information", "User question: Q3\nWe answered: " + AnswerText(0x42C3)},
        {"Information", "User information: note"},
        {"Error", "broken"},
        {"Error", "still Error"},
    };
    ASSERT_EQ(messages.size(), sizeof(expected) / sizeof(expected[0]));
    for (std::size_t i = 0; i < messages.size(); ++i) {
      SCOPED_TRACE(i);
      EXPECT_EQ(messages[i].level, expected[i].level);
      EXPECT_EQ(messages[i].text, expected[i].text);
    }
  });
}

}  // namespace
