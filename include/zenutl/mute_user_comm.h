// MuteUserComm: the silent channel to the user, every thread's channel by default.
//
// It asks nothing and shows nothing: each question returns the caller's default answer at once,
// and errors and information vanish. For a channel that keeps what was asked, see
// log_user_comm.h; the contract of channels is in user_comm.h. Nothing here throws.
#ifndef ZENUTL_MUTE_USER_COMM_H_
#define ZENUTL_MUTE_USER_COMM_H_

#include "zenutl/user_comm.h"

class MuteUserComm : public UserComm {
 public:
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
};

#endif  // ZENUTL_MUTE_USER_COMM_H_
