// The table behind the library's handles: events (zn_event.h) and threads (thread_handle.h).
//
// A handle is a number that names an entry of one process-wide table, never a pointer, so a
// stale handle is a failed lookup rather than a use of freed memory. Entries are shared
// pointers: a wait in progress keeps its object alive when another thread closes the handle.
// One lock guards the table and the set/clear state of every object in it; waits sleep on
// condition variables of their own, registered with the objects they wait for, so setting one
// object wakes only the threads waiting for it.
#ifndef ZENUTL_PLATFORM_HANDLE_TABLE_H_
#define ZENUTL_PLATFORM_HANDLE_TABLE_H_

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "zenutl/platform_types.h"

namespace zenutl {
namespace platform {

// Something a handle names and a thread can wait for. Its state is read and changed only under
// the lock of LockHandleTable().
class Waitable {
 public:
  Waitable(bool manualReset, bool initiallySet) : mManualReset(manualReset), mSet(initiallySet) {}
  virtual ~Waitable();
  Waitable(const Waitable&) = delete;
  Waitable& operator=(const Waitable&) = delete;

  // Sets the object and wakes the waits on it.
  void Set();
  void Reset() { mSet = false; }
  // What a wait that finds the object set does: an auto-reset object is clear again after it.
  bool TakeIfSet();

  // Runs without the lock after a wait for this object alone has found it set.
  virtual void AfterWait() {}

  void AddWaiter(std::condition_variable* waiter) { mWaiters.push_back(waiter); }
  void RemoveWaiter(std::condition_variable* waiter);

 private:
  const bool mManualReset;
  bool mSet;
  std::vector<std::condition_variable*> mWaiters;
};

// The lock that guards the table and the state of its objects.
std::unique_lock<std::mutex> LockHandleTable();

// Enters `object` in the table; its new handle, or null if memory ran out.
HANDLE OpenHandle(const std::shared_ptr<Waitable>& object);
// The object an open handle names, or null.
std::shared_ptr<Waitable> ObjectOfHandle(HANDLE handle);
// Removes the handle from the table; false if it wasn't open. The object goes when the last
// wait on it ends.
bool CloseHandleEntry(HANDLE handle);

// WaitForMultipleObjects waiting for any: WAIT_OBJECT_0 + i, WAIT_TIMEOUT or WAIT_FAILED.
DWORD WaitForAnyHandle(DWORD count, const HANDLE* handles, DWORD milliseconds);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_HANDLE_TABLE_H_
