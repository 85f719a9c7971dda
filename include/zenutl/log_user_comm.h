// LogUserComm: a channel to the user for work without one, such as batch runs and services.
//
// Every question is answered with the caller's default answer, and the exchange is kept as
// text and, with logging on, written to the process log (log.h) at importance Information; a
// fatal error is kept and logged at Error. Whether the log writes them is up to its level. A
// question is recorded as
//
//   User information: <information>        (absent for the three-argument AskUserYesNo)
//   User question: <question>
//   We answered: <text of the default answer>
//
// with the answer's text from the language strings 0x42BF to 0x42C3 for codes 1 to 5 (yes, yes
// to all, no, no to all, cancel) and 0x42C4 for any other code. `InformUser` is recorded as
// "User information: <text>" in the same place as questions. Titles and flags are not used.
// Null texts count as empty. Nothing here throws.
#ifndef ZENUTL_LOG_USER_COMM_H_
#define ZENUTL_LOG_USER_COMM_H_

#include "zenutl/cstring.h"
#include "zenutl/log.h"
#include "zenutl/user_comm.h"

class LogUserComm : public UserComm {
 public:
  LogUserComm();
  LogUserComm(const LogUserComm& other) = default;
  LogUserComm& operator=(const LogUserComm& other) = default;

  int AskUserYesNo(const char* question, const char* information, const char* title,
                   int defaultAnswer) override;
  int AskUserYesNo(const char* question, const char* title, int defaultAnswer) override;
  int AskUserYesYesToAllNoNoToAllCancel(const char* question, const char* information,
                                        const char* title, int defaultAnswer) override;
  int AskUserYesYesToAllCancel(const char* question, const char* information, const char* title,
                               int defaultAnswer) override;
  int AskUserYesCancel(const char* question, const char* information, const char* title,
                       int defaultAnswer) override;
  void FatalError(const char* text, const char* title) override;
  void InformUser(const char* text, const char* title, unsigned long flags) override;

  // Whether exchanges go to the log; off at first.
  void SetLogging(bool logging) { mLogging = logging; }
  bool GetLogging() const { return mLogging; }
  // The text of the last FatalError, and the record of the last question or information.
  const char* GetLastError() const { return mLastError; }
  const char* GetLastUserQuestion() const { return mLastUserQuestion; }

  // Creates the process log on `fileName`; a log that exists already stays as it is.
  void SetLogFile(const char* fileName);
  // Sets the level of the process log, if there is one.
  void SetLogLevel(Log::Importance level);

 protected:
  // The text of an answer code, from the language strings.
  CString GetDefaultString(int answer);

 private:
  int Record(const char* question, const char* information, bool withInformation,
             int defaultAnswer);

  CString mLastError;
  CString mLastUserQuestion;
  bool mLogging;
};

#endif  // ZENUTL_LOG_USER_COMM_H_
