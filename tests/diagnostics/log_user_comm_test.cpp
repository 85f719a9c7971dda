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

std::string AnswerText(unsigned int id) {
  return LanguageString::Get(id);
}

TEST(LogUserComm, AnswersWithTheDefaultAndRecordsTheQuestionWithTheAnswersText) {
  typedef std::function<int(LogUserComm&, int)> Ask;
  const struct {
    const char* name;
    Ask ask;
    const char* information;
  } asks[] = {
      {"YesNo/4", [](LogUserComm& c, int a) { return c.AskUserYesNo("Q", "I", "T", a); },
       "User information: I\n"},
      {"YesNo/3", [](LogUserComm& c, int a) { return c.AskUserYesNo("Q", "T", a); }, ""},
      {"YesYesToAllNoNoToAllCancel",
       [](LogUserComm& c, int a) { return c.AskUserYesYesToAllNoNoToAllCancel("Q", "I", "T", a); },
       "User information: I\n"},
      {"YesYesToAllCancel",
       [](LogUserComm& c, int a) { return c.AskUserYesYesToAllCancel("Q", "I", "T", a); },
       "User information: I\n"},
      {"YesCancel", [](LogUserComm& c, int a) { return c.AskUserYesCancel("Q", "I", "T", a); },
       "User information: I\n"},
  };
  const struct {
    int code;
    unsigned int textId;
  } answers[] = {{1, 0x42BF}, {2, 0x42C0}, {3, 0x42C1}, {4, 0x42C2},
                 {5, 0x42C3}, {0, 0x42C4}, {6, 0x42C4}, {-1, 0x42C4}};
  for (const auto& ask : asks) {
    for (const auto& answer : answers) {
      SCOPED_TRACE(std::string(ask.name) + " " + std::to_string(answer.code));
      LogUserComm comm;
      EXPECT_EQ(ask.ask(comm, answer.code), answer.code);
      EXPECT_EQ(std::string(comm.GetLastUserQuestion()),
                ask.information + std::string("User question: Q\nWe answered: ") +
                    AnswerText(answer.textId));
      EXPECT_STREQ(comm.GetLastError(), "");
    }
  }
}

TEST(LogUserComm, KeepsErrorsAndQuestionsApartAndCopiesMemberWise) {
  LogUserComm comm;
  EXPECT_FALSE(comm.GetLogging());
  comm.FatalError("disk on fire", "T");
  comm.AskUserYesNo(nullptr, nullptr, 3);
  EXPECT_EQ(std::string(comm.GetLastUserQuestion()),
            "User question: \nWe answered: " + AnswerText(0x42C1));
  comm.InformUser("done", "T", 0x40);
  EXPECT_STREQ(comm.GetLastUserQuestion(), "User information: done");
  EXPECT_STREQ(comm.GetLastError(), "disk on fire");

  comm.SetLogging(true);
  LogUserComm assigned;
  assigned = comm;
  for (const LogUserComm& other : {LogUserComm(comm), assigned}) {
    EXPECT_TRUE(other.GetLogging());
    EXPECT_STREQ(other.GetLastError(), "disk on fire");
    EXPECT_STREQ(other.GetLastUserQuestion(), "User information: done");
  }
}

class LogUserCommLogTest : public zenutl_test::TempDirTest {};

TEST_F(LogUserCommLogTest, WritesExchangesOnlyWithLoggingOnAndAsTheLogsLevelAllows) {
  zenutl_test::ExpectPassesInChild([&] {
    LogUserComm comm;
    const std::string name = File("user.log");
    comm.SetLogFile(name.c_str());
    comm.SetLogFile(File("second.log").c_str());
    EXPECT_FALSE(boost::filesystem::exists(File("second.log")));

    comm.SetLogging(true);  // at the log's level, Critical, nothing of this gets through
    comm.AskUserYesCancel("at Critical", "I", "T", 1);
    comm.FatalError("at Critical", "T");
    comm.SetLogLevel(Log::Information);
    comm.SetLogging(false);
    comm.AskUserYesCancel("logging off", "I", "T", 1);
    comm.FatalError("logging off", "T");
    comm.SetLogging(true);
    comm.AskUserYesCancel("Q", "I", "T", 2);
    comm.AskUserYesNo("Q3", "T", 5);
    comm.InformUser("note", "T", 0);
    comm.FatalError("broken", "T");

    std::vector<std::string> written;
    for (const auto& record : zenutl_test::ParseLogFile(zenutl_test::ReadWholeFile(name))) {
      if (record.kind == "message" && record.location.empty())
        written.push_back(record.level + ": " + record.text);
    }
    const std::vector<std::string> expected = {
        "Information: User information: I\nUser question: Q\nWe answered: " + AnswerText(0x42C0),
        "Information: User question: Q3\nWe answered: " + AnswerText(0x42C3),
        "Information: User information: note", "Error: broken"};
    EXPECT_EQ(written, expected);
  });
}

}  // namespace
