#include "platform/handle_table.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <new>
#include <unordered_map>

#include "zenutl/zn_event.h"

namespace zenutl {
namespace platform {
namespace {

struct HandleTable {
  std::mutex lock;
  std::unordered_map<std::uintptr_t, std::shared_ptr<Waitable>> objects;
  std::uintptr_t lastHandle = 0;
};

// Never destroyed: a thread may still close or wait on a handle while the process exits.
HandleTable& Table() {
  static HandleTable* const table = new HandleTable;
  return *table;
}

std::uintptr_t KeyOf(HANDLE handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

// The waits below sleep on `waiter`, entered with every object they wait for, and must take it
// out again however they end.
class WaiterRegistration {
 public:
  WaiterRegistration(const std::vector<std::shared_ptr<Waitable>>& objects,
                     std::condition_variable* waiter)
      : mObjects(objects), mWaiter(waiter) {
    for (const auto& object : mObjects) object->AddWaiter(mWaiter);
  }
  ~WaiterRegistration() {
    for (const auto& object : mObjects) object->RemoveWaiter(mWaiter);
  }
  WaiterRegistration(const WaiterRegistration&) = delete;
  WaiterRegistration& operator=(const WaiterRegistration&) = delete;

 private:
  const std::vector<std::shared_ptr<Waitable>>& mObjects;
  std::condition_variable* mWaiter;
};

// Under the table's lock: the index of the first set object, which the wait takes; -1 if none.
long TakeFirstSet(const std::vector<std::shared_ptr<Waitable>>& objects) {
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (objects[i]->TakeIfSet()) return static_cast<long>(i);
  }
  return -1;
}

}  // namespace

Waitable::~Waitable() = default;

void Waitable::Set() {
  mSet = true;
  for (std::condition_variable* waiter : mWaiters) waiter->notify_one();
}

bool Waitable::TakeIfSet() {
  if (!mSet) return false;
  if (!mManualReset) mSet = false;
  return true;
}

void Waitable::RemoveWaiter(std::condition_variable* waiter) {
  mWaiters.erase(std::remove(mWaiters.begin(), mWaiters.end(), waiter), mWaiters.end());
}

std::unique_lock<std::mutex> LockHandleTable() {
  return std::unique_lock<std::mutex>(Table().lock);
}

HANDLE OpenHandle(const std::shared_ptr<Waitable>& object) {
  HandleTable& table = Table();
  std::lock_guard<std::mutex> guard(table.lock);
  try {
    const std::uintptr_t key = table.lastHandle + 1;
    table.objects.emplace(key, object);
    table.lastHandle = key;
    return reinterpret_cast<HANDLE>(key);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

std::shared_ptr<Waitable> ObjectOfHandle(HANDLE handle) {
  HandleTable& table = Table();
  std::lock_guard<std::mutex> guard(table.lock);
  const auto found = table.objects.find(KeyOf(handle));
  return found == table.objects.end() ? nullptr : found->second;
}

bool CloseHandleEntry(HANDLE handle) {
  HandleTable& table = Table();
  std::shared_ptr<Waitable> closed;  // destroyed once the lock is released
  std::lock_guard<std::mutex> guard(table.lock);
  const auto found = table.objects.find(KeyOf(handle));
  if (found == table.objects.end()) return false;
  closed.swap(found->second);
  table.objects.erase(found);
  return true;
}

DWORD WaitForAnyHandle(DWORD count, const HANDLE* handles, DWORD milliseconds) {
  if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || handles == nullptr) return WAIT_FAILED;
  std::vector<std::shared_ptr<Waitable>> objects;
  for (DWORD i = 0; i < count; ++i) {
    objects.push_back(ObjectOfHandle(handles[i]));
    if (!objects.back()) return WAIT_FAILED;
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  std::condition_variable waiter;
  std::unique_lock<std::mutex> lock = LockHandleTable();
  DWORD result = WAIT_TIMEOUT;
  {
    WaiterRegistration registration(objects, &waiter);
    for (bool timedOut = false;;) {
      const long taken = TakeFirstSet(objects);
      if (taken >= 0) {
        result = static_cast<DWORD>(WAIT_OBJECT_0 + taken);
        break;
      }
      if (timedOut) break;  // after one last look
      if (milliseconds == INFINITE) {
        waiter.wait(lock);
      } else {
        timedOut = waiter.wait_until(lock, deadline) == std::cv_status::timeout;
      }
    }
  }
  lock.unlock();
  if (count == 1 && result == WAIT_OBJECT_0) objects.front()->AfterWait();
  return result;
}

}  // namespace platform
}  // namespace zenutl
