#include "zenutl/mute_user_comm.h"

int MuteUserComm::AskUserYesNo(const char*, const char*, const char*, int defaultAnswer) {
  return defaultAnswer;
}

int MuteUserComm::AskUserYesNo(const char*, const char*, int defaultAnswer) {
  return defaultAnswer;
}

int MuteUserComm::AskUserYesYesToAllNoNoToAllCancel(const char*, const char*, const char*,
                                                    int defaultAnswer) {
  return defaultAnswer;
}

int MuteUserComm::AskUserYesYesToAllCancel(const char*, const char*, const char*,
                                           int defaultAnswer) {
  return defaultAnswer;
}

int MuteUserComm::AskUserYesCancel(const char*, const char*, const char*, int defaultAnswer) {
  return defaultAnswer;
}

void MuteUserComm::FatalError(const char*, const char*) {}

void MuteUserComm::InformUser(const char*, const char*, unsigned long) {}
