// Threads named by handles, as the code this library comes from starts and watches them.
//
// `BeginThread` stands for _beginthreadex and `GetExitCodeThread` for its namesake. The handle
// lives in the same table as the events of zn_event.h: `ZnWaitForSingleObject` on it returns
// once the thread has ended (joined, so that its thread-local clean-up has run too), and
// `ZnCloseHandle` releases it; closing the handle of a running thread leaves the thread running,
// as on Windows.
//
// Error contract: nothing here throws; failures answer null or false.
#ifndef ZENUTL_PLATFORM_THREAD_HANDLE_H_
#define ZENUTL_PLATFORM_THREAD_HANDLE_H_

#include "zenutl/platform_types.h"

// A thread that has not ended yet reports this as its exit code.
#ifndef STILL_ACTIVE
#define STILL_ACTIVE 0x00000103UL
#endif

namespace zenutl {
namespace platform {

typedef unsigned int (*ThreadProc)(void* argument);

// Runs `proc(argument)` on a new thread, whose result becomes the exit code. Null if the system
// refuses another thread. An exception out of `proc` ends the process, as any uncaught one does.
HANDLE BeginThread(ThreadProc proc, void* argument);

// The thread's result once it has ended, STILL_ACTIVE before. False for a handle that isn't an
// open thread handle.
bool GetExitCodeThread(HANDLE thread, DWORD* exitCode);

// GetCurrentThreadId: the kernel's id of the calling thread (gettid), as `ps -L` shows it.
long CurrentThreadId();

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_THREAD_HANDLE_H_
