#include "zenutl/log_user_comm.h"

#include "zenutl/language_string.h"

LogUserComm::LogUserComm() : mLastError(), mLastUserQuestion(), mLogging(false) {}

int LogUserComm::AskUserYesNo(const char* question, const char* information, const char*,
                              int defaultAnswer) {
  return Record(question, information, true, defaultAnswer);
}

int LogUserComm::AskUserYesNo(const char* question, const char*, int defaultAnswer) {
  return Record(question, nullptr, false, defaultAnswer);
}

int LogUserComm::AskUserYesYesToAllNoNoToAllCancel(const char* question, const char* information,
                                                   const char*, int defaultAnswer) {
  return Record(question, information, true, defaultAnswer);
}

int LogUserComm::AskUserYesYesToAllCancel(const char* question, const char* information,
                                          const char*, int defaultAnswer) {
  return Record(question, information, true, defaultAnswer);
}

int LogUserComm::AskUserYesCancel(const char* question, const char* information, const char*,
                                  int defaultAnswer) {
  return Record(question, information, true, defaultAnswer);
}

void LogUserComm::FatalError(const char* text, const char*) {
  mLastError = text;
  if (mLogging) Log::WriteMessage(nullptr, nullptr, mLastError, Log::Error, false);
}

void LogUserComm::InformUser(const char* text, const char*, unsigned long) {
  CString record = "User information: ";
  record += text;
  if (mLogging) Log::WriteMessage(nullptr, nullptr, record, Log::Information, false);
  mLastUserQuestion = record;
}

void LogUserComm::SetLogFile(const char* fileName) {
  Log::CreateInstance(fileName);
}

void LogUserComm::SetLogLevel(Log::Importance level) {
  Log::SetLogLevel(level);
}

CString LogUserComm::GetDefaultString(int answer) {
  static const unsigned int kYes = 0x42BF;  // then yes to all, no, no to all, cancel
  static const unsigned int kUnknownAnswer = 0x42C4;
  const unsigned int id =
      answer >= 1 && answer <= 5 ? kYes + static_cast<unsigned int>(answer - 1) : kUnknownAnswer;
  return CString(LanguageString::Get(id));
}

int LogUserComm::Record(const char* question, const char* information, bool withInformation,
                        int defaultAnswer) {
  CString record;
  if (withInformation) {
    record += "User information: ";
    record += information;
    record += "\n";
  }
  record += "User question: ";
  record += question;
  record += "\nWe answered: ";
  record += GetDefaultString(defaultAnswer);
  if (mLogging) Log::WriteMessage(nullptr, nullptr, record, Log::Information, false);
  mLastUserQuestion = record;
  return defaultAnswer;
}
