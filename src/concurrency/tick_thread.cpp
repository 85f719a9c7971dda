#include "zenutl/tick_thread.h"

#include <algorithm>

#include "platform/thread_handle.h"
#include "zenutl/exception.h"

namespace {

unsigned long AtMostInfinite(unsigned long timeOut) {
  return std::min<unsigned long>(timeOut, INFINITE);
}

}  // namespace

TickThread::TickThread(unsigned long timeOut, bool start)
    : mThread(nullptr),
      mTimeOut(AtMostInfinite(timeOut)),
      mQuitEvent(nullptr),
      mTickEvent(nullptr) {
  Init(start);
}

TickThread::TickThread(void* tickEvent, bool start)
    : mThread(nullptr), mTimeOut(INFINITE), mQuitEvent(nullptr), mTickEvent(tickEvent) {
  Init(start);
}

TickThread::TickThread(void* tickEvent, unsigned long timeOut, bool start)
    : mThread(nullptr),
      mTimeOut(AtMostInfinite(timeOut)),
      mQuitEvent(nullptr),
      mTickEvent(tickEvent) {
  Init(start);
}

TickThread::TickThread(const TickThread& other)
    : mThread(other.mThread),
      mTimeOut(other.GetTimeOut()),
      mQuitEvent(other.mQuitEvent),
      mTickEvent(other.mTickEvent) {}

TickThread& TickThread::operator=(const TickThread& other) {
  mThread = other.mThread;
  mTimeOut.store(other.GetTimeOut(), std::memory_order_relaxed);
  mQuitEvent = other.mQuitEvent;
  mTickEvent = other.mTickEvent;
  return *this;
}

TickThread::~TickThread() {
  Stop();
  ZnCloseHandle(mQuitEvent);
}

void TickThread::Init(bool start) {
  if (mTickEvent == nullptr && GetTimeOut() == INFINITE) {
    throw Exception("TickThread::Init(...) - Tick will never be called.");
  }
  mQuitEvent = ZnCreateEvent(false, false);
  if (mQuitEvent == nullptr) throw Exception("TickThread::Init(...) - Cannot create quit event.");
  if (start && !Start()) {
    ZnCloseHandle(mQuitEvent);
    throw Exception("TickThread::Init(...) - Cannot start the thread.");
  }
}

bool TickThread::Start() {
  if (IsRunning()) return false;
  if (mThread != nullptr) EndThread();  // it ended by itself
  ZnResetEvent(mQuitEvent);
  const ThreadProc proc = GetThreadProc();
  if (proc != nullptr) mThread = zenutl::platform::BeginThread(proc, this);
  return mThread != nullptr;
}

bool TickThread::Stop() {
  if (mThread == nullptr) return false;
  EndThread();
  return true;
}

bool TickThread::IsRunning() const {
  DWORD exitCode = 0;
  return mThread != nullptr && zenutl::platform::GetExitCodeThread(mThread, &exitCode) &&
         exitCode == STILL_ACTIVE;
}

void TickThread::EndThread() {
  ZnSetEvent(mQuitEvent);
  ZnWaitForSingleObject(mThread, INFINITE);
  ZnCloseHandle(mThread);
  mThread = nullptr;
}

void TickThread::Tick() {}

TickThread::ThreadProc TickThread::GetThreadProc() const {
  return &TickThread::TickThreadProc;
}

void TickThread::SetTimeOut(unsigned long timeOut) {
  mTimeOut.store(AtMostInfinite(timeOut), std::memory_order_relaxed);
}

// The quit event comes first, so that it wins when both are set.
unsigned int TickThread::TickThreadProc(void* self) {
  TickThread* const thread = static_cast<TickThread*>(self);
  const HANDLE events[2] = {thread->mQuitEvent, thread->mTickEvent};
  const DWORD count = thread->mTickEvent != nullptr ? 2 : 1;
  for (;;) {
    const DWORD result =
        ZnWaitForMultipleObjects(count, events, static_cast<DWORD>(thread->GetTimeOut()));
    if (result != WAIT_OBJECT_0 + 1 && result != WAIT_TIMEOUT) return result;
    try {
      thread->Tick();
    } catch (...) {
      return result;
    }
  }
}
