#include "platform/thread_handle.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/handle_table.h"

namespace zenutl {
namespace platform {
namespace {

// A thread's handle is set, for good, when the thread has ended.
class ThreadObject : public Waitable {
 public:
  ThreadObject() : Waitable(true, false) {}
  // Detached, never joined here: the last owner may be the thread itself, and closing the
  // handle of a running thread must not wait for it.
  ~ThreadObject() override {
    if (mThread.joinable()) mThread.detach();
  }

  void Run(ThreadProc proc, void* argument, const std::shared_ptr<ThreadObject>& self) {
    mThread = std::thread([proc, argument, self] {
      const unsigned int exitCode = proc(argument);
      std::unique_lock<std::mutex> lock = LockHandleTable();
      self->mExitCode = exitCode;
      self->Set();
    });
  }

  // Under the table's lock.
  DWORD ExitCode() const { return mExitCode; }

  // The thread has returned from its function; joining it also waits out its thread-local
  // clean-up, so that what the thread owned is gone when the wait returns, as on Windows.
  void AfterWait() override {
    std::lock_guard<std::mutex> guard(mJoinLock);
    if (mThread.joinable() && mThread.get_id() != std::this_thread::get_id()) mThread.join();
  }

 private:
  std::thread mThread;
  std::mutex mJoinLock;
  DWORD mExitCode = STILL_ACTIVE;
};

}  // namespace

HANDLE BeginThread(ThreadProc proc, void* argument) {
  if (proc == nullptr) return nullptr;
  try {
    const std::shared_ptr<ThreadObject> thread = std::make_shared<ThreadObject>();
    const HANDLE handle = OpenHandle(thread);
    if (handle == nullptr) return nullptr;
    try {
      thread->Run(proc, argument, thread);
    } catch (const std::system_error&) {
      CloseHandleEntry(handle);
      return nullptr;
    }
    return handle;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool GetExitCodeThread(HANDLE thread, DWORD* exitCode) {
  const std::shared_ptr<Waitable> object = ObjectOfHandle(thread);
  const ThreadObject* threadObject = dynamic_cast<const ThreadObject*>(object.get());
  if (threadObject == nullptr || exitCode == nullptr) return false;
  std::unique_lock<std::mutex> lock = LockHandleTable();
  *exitCode = threadObject->ExitCode();
  return true;
}

long CurrentThreadId() {
  return static_cast<long>(::syscall(SYS_gettid));
}

}  // namespace platform
}  // namespace zenutl
