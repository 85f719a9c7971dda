// ZnAutoLock: scoped locks on the application's shared resources, taken in one global order.
//
// The application names its shared resources once, at start-up, with `Initialize`; their order
// in that list is the order in which any thread may lock them. A `ZnAutoLock` locks one resource
// for the length of a scope. A thread that asks for a resource with a lower index than one it
// holds is refused at once, every time, whether or not another thread holds anything: this is
// lock-order checking, so an ordering fault shows up in the first test that takes that path, not
// only in the unlucky run where two threads collide. A resource the thread holds already may be
// taken again in any order (the locks are recursive).
//
//   ZnAutoLock::Initialize({"Settings", "Data set", "Plot"});   // 0, 1, 2; before any thread
//   { ZnAutoLock settings(0); ZnAutoLock data(1); ... }          // fine
//   { ZnAutoLock data(1); ZnAutoLock settings(0); }              // throws DeadlockException
//
// Error contract: an out-of-order request throws `DeadlockException` (exception.h) after
// writing the same text to the log (log.h) at importance Critical, while the thread still holds
// its resources; nothing is locked by the refused request. The text is
//   "Deadlock detected for thread <id> while trying to lock <name>. The following resources
//   were locked:" and then "\n<name>" for each resource the thread holds, oldest first, a name
//   taken several times appearing as often; <id> is the kernel's thread id (gettid).
// An index that `Initialize` never made throws `Exception`. Nothing else is reported.
#ifndef ZENUTL_ZN_AUTO_LOCK_H_
#define ZENUTL_ZN_AUTO_LOCK_H_

#include <string>
#include <vector>

class ZnAutoLock {
 public:
  // Makes one resource per name, with index 0, 1, 2, ... in the order given. Call once, before
  // the first lock and before other threads start: the table of resources takes no lock. A
  // second call appends resources numbered from 0 again, at table positions that don't match
  // their numbers; don't.
  static void Initialize(const std::vector<std::string>& names);

  // Locks resource `index`, waiting as long as another thread holds it, or throws as above.
  explicit ZnAutoLock(unsigned int index);
  // Releases the calling thread's most recent lock, whichever resource that is: locks are
  // undone strictly last-in-first-out, which scoped use guarantees.
  ~ZnAutoLock();

  ZnAutoLock(const ZnAutoLock&) = delete;
  ZnAutoLock& operator=(const ZnAutoLock&) = delete;

 private:
  [[maybe_unused]] unsigned int mIndex;
};

#endif  // ZENUTL_ZN_AUTO_LOCK_H_
