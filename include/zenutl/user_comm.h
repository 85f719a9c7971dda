// UserComm: the channel through which library code tells or asks the user something.
//
// Code deep in the library can't know whether it runs under a dialog-based application, a
// batch job or a worker thread, so it never shows anything itself: it asks `GetUserComm()` for
// this thread's channel and calls it. Each thread has its own channel, made on first use by a
// replaceable default factory; out of the box that is the silent `MuteUserComm`
// (mute_user_comm.h), which answers every question with the caller's default. `LogUserComm`
// (log_user_comm.h) does the same and records the exchange. An application with a user
// interface derives its own channel and installs it per thread with `SetUserComm`, or for every
// thread that has none yet with `SetDefaultUserCommType<T>()`.
//
// Answer codes are the caller's business: the channels only pass `defaultAnswer` back, and
// `LogUserComm` names 1 to 5 as yes, yes to all, no, no to all and cancel.
//
// Ownership: a channel given to `SetUserComm` belongs to the thread, which deletes it when it
// ends; a channel handed back by `SetUserComm` or `SetDefaultUserCommType` belongs to the caller.
// Error contract: the channels themselves never throw. `GetUserComm` returns null when the
// factory made nothing, and throws `boost::bad_function_call` only if no factory can be had.
#ifndef ZENUTL_USER_COMM_H_
#define ZENUTL_USER_COMM_H_

#include <boost/function.hpp>

class UserComm {
 public:
  virtual ~UserComm();

  // Questions return the code of the answer; `defaultAnswer` is what a channel that can't ask
  // returns. `information` is shown beside the question, `title` as the caption.
  virtual int AskUserYesNo(const char* question, const char* information, const char* title,
                           int defaultAnswer) = 0;
  virtual int AskUserYesNo(const char* question, const char* title, int defaultAnswer) = 0;
  virtual int AskUserYesYesToAllNoNoToAllCancel(const char* question, const char* information,
                                                const char* title, int defaultAnswer) = 0;
  virtual int AskUserYesYesToAllCancel(const char* question, const char* information,
                                       const char* title, int defaultAnswer) = 0;
  virtual int AskUserYesCancel(const char* question, const char* information, const char* title,
                               int defaultAnswer) = 0;
  // Tells the user of a grave error. Despite the name it returns and the caller goes on.
  virtual void FatalError(const char* text, const char* title) = 0;
  virtual void InformUser(const char* text, const char* title, unsigned long flags) = 0;
  // A busy indicator around long work; nothing unless a channel overrides them.
  virtual void HourGlassOn();
  virtual void HourGlassOff();

  // Makes a new T for the default factory.
  template <typename T>
  struct GenericUserCommFactory {
    UserComm* operator()() const { return new T; }
  };

  // This thread's channel, made by the default factory on the first call of the thread.
  static UserComm* GetUserComm();
  // Installs `comm` (may be null) as this thread's channel and returns the previous one, or null;
  // the caller now owns what is returned, not yet deleted. Setting the present channel again
  // changes nothing and returns null, so a channel never has two owners. The usual pattern
  // installs a channel around a piece of work and reinstalls the returned one afterwards.
  static UserComm* SetUserComm(UserComm* comm);

  // Makes T the type of every channel made from now on, and gives the calling thread a new T at
  // once; other threads keep the channel they have. Returns the calling thread's previous
  // channel (or null), which is now the caller's to delete.
  template <typename T>
  static UserComm* SetDefaultUserCommType() {
    return PrivateSetDefaultUserCommType(GenericUserCommFactory<T>());
  }

 private:
  static UserComm* PrivateSetDefaultUserCommType(boost::function<UserComm*()> factory);
};

#endif  // ZENUTL_USER_COMM_H_
