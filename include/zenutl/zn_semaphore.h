// ZnSemaphore: a named limit on how many holders, in any process of the user, use something at
// once, answered without waiting.
//
// Every object `Init`ed with the same name, in this process or another of the same user, counts
// against one semaphore; one object is one holder. `Lock` takes a place or answers false at once
// when all are taken; it never waits. The semaphore survives its holders: a place is freed the
// moment its holder's object is destroyed or its process ends, however it ends (a crash, a kill),
// and nothing is left over from earlier runs.
//
//   ZnSemaphore licence;
//   licence.Init(3, "Analyser seats");
//   if (!licence.Lock()) { /* three copies are working already */ }
//
// The number of places is set by the first object to open the name while no other has it open;
// objects that come later keep to it whatever they ask for, as on Windows. Names are taken
// byte for byte and case-sensitively; any text is a valid name, and "Local\X" is the same
// semaphore as "X". A null or empty name makes a semaphore that nobody else can reach. On Linux
// a named semaphore is a lock file in the user's runtime folder, so it is shared between the
// processes of one user (a "Global\" prefix is just part of the name). A child made by fork()
// without exec shares the places its parent holds at the time.
//
// Copies are shallow, deliberately: a copy is the same holder as the original, and destroying
// either gives the place back. Keep copies for short-lived views. One object, with its copies,
// belongs to one thread at a time.
//
// Error contract: `Init` throws `Exception` with "ZnSemaphore: Zero users" for fewer than one
// place, and with "Unknown exception when initialising ZnSemaphore" when the semaphore can't be
// had (the inner exception then says why, with the system's own text); the object is then as
// before. `Lock` before a successful `Init` throws `Exception` with "ZnSemaphore is not
// Initialised". A full semaphore is an ordinary false.
#ifndef ZENUTL_ZN_SEMAPHORE_H_
#define ZENUTL_ZN_SEMAPHORE_H_

#include <boost/shared_ptr.hpp>

namespace zenutl {
namespace platform {
class SemaphoreSlots;
}
}  // namespace zenutl

class ZnSemaphore {
 public:
  ZnSemaphore();
  ZnSemaphore(const ZnSemaphore& other);
  ZnSemaphore& operator=(const ZnSemaphore& other);
  // Gives back the place this object holds.
  virtual ~ZnSemaphore();

  // Opens the semaphore `name` with `maxUsers` places (at most 2147483647; more count as that).
  // A second Init leaves the first semaphore (giving its place back unless a copy still holds
  // it) for the new one.
  void Init(long maxUsers, const char* name);

  // Takes a place: true if this object has one now, false at once if all are taken. An object
  // that holds a place already answers true and takes no second one.
  bool Lock();
  // Gives this object's place back; true, also when it held none. False if the system refused,
  // or before Init.
  bool UnLock();

 private:
  boost::shared_ptr<zenutl::platform::SemaphoreSlots> mSemaphore;  // null until Init
};

#endif  // ZENUTL_ZN_SEMAPHORE_H_
