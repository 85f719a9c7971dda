#include "zenutl/user_comm.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/recursive_mutex.hpp>
#include <boost/thread/tss.hpp>

#include "zenutl/mute_user_comm.h"

namespace {

// Each thread's channel; the slot deletes it when the thread ends.
boost::thread_specific_ptr<UserComm> smUserComm;

// Made on first use, so that a channel asked for while static objects are still being built
// finds its guard.
boost::recursive_mutex& FactoryMutex() {
  static boost::recursive_mutex mutex;
  return mutex;
}

// Empty until first needed; guarded by FactoryMutex.
boost::function<UserComm*()>& DefaultFactory() {
  static boost::function<UserComm*()> factory;
  return factory;
}

typedef boost::lock_guard<boost::recursive_mutex> FactoryGuard;

}  // namespace

UserComm::~UserComm() {}

void UserComm::HourGlassOn() {}

void UserComm::HourGlassOff() {}

UserComm* UserComm::GetUserComm() {
  if (UserComm* comm = smUserComm.get()) return comm;
  FactoryGuard guard(FactoryMutex());
  boost::function<UserComm*()>& factory = DefaultFactory();
  if (factory.empty()) factory = GenericUserCommFactory<MuteUserComm>();
  UserComm* comm = factory();
  smUserComm.reset(comm);
  return comm;
}

UserComm* UserComm::SetUserComm(UserComm* comm) {
  // The present channel set again stays where it is. Handing it back as "the previous one"
  // would give the caller a channel the thread still owns and deletes at its end.
  if (comm != nullptr && comm == smUserComm.get()) return nullptr;
  UserComm* previous = smUserComm.release();
  smUserComm.reset(comm);
  return previous;
}

UserComm* UserComm::PrivateSetDefaultUserCommType(boost::function<UserComm*()> factory) {
  FactoryGuard guard(FactoryMutex());
  UserComm* previous = smUserComm.release();
  DefaultFactory() = factory;
  smUserComm.reset(DefaultFactory()());
  return previous;
}
