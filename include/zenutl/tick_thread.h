// TickThread: a worker thread that calls `Tick()` periodically, or whenever an event is set,
// until it is stopped.
//
// Derive from it and override `Tick()`. Ticks come when `timeOut` milliseconds pass without one
// (the period counts from the end of the last tick, not by the clock), and, with a tick event,
// whenever that event is set; the event is the caller's, made with `ZnCreateEvent` (zn_event.h)
// and best auto-reset, so that one set makes one tick. A time-out of INFINITE means no timed
// ticks; 0 ticks again as soon as a tick ends.
//
//   class Autosave : public TickThread {
//    public:
//     Autosave() : TickThread(60000, false) { Start(); }   // not `true`: see below
//     ~Autosave() override { Stop(); }
//    protected:
//     void Tick() override { SaveAll(); }
//   };
//
// A constructor asked to start runs `Start()` before a subclass exists, so the thread runs the
// base `Tick()` (which does nothing) and may tick before the subclass is built: a subclass that
// overrides `Tick()` or `GetThreadProc()` passes `start` as false and calls `Start()` itself.
// Likewise the base destructor runs after the subclass is gone, so a subclass calls `Stop()` in
// its own destructor. `Tick()` runs on the worker; everything else belongs to the owner's
// thread, and `Start`, `Stop` and the destructor must never be called from `Tick()` (they wait
// for the thread they would be running on).
//
// An exception out of `Tick()` ends the thread quietly: `IsRunning()` turns false and `Start()`
// may start it again. The thread's exit code is the result of its last wait: WAIT_OBJECT_0 after
// `Stop`, WAIT_TIMEOUT or WAIT_OBJECT_0 + 1 when a timed or event tick threw, WAIT_FAILED if
// the wait itself failed (the tick event was closed).
//
// Copies are shallow, deliberately: a copy shares the thread and the events, and whichever is
// destroyed first stops the thread and closes the quit event for both; the other then finds
// them gone and its calls answer as for a stopped thread.
//
// Error contract: the constructors throw `Exception` with "TickThread::Init(...) - Tick will
// never be called." (no event and an INFINITE time-out), "TickThread::Init(...) - Cannot create
// quit event." or "TickThread::Init(...) - Cannot start the thread.", leaving no thread behind.
// Afterwards `Start` and `Stop` answer by their result only.
#ifndef ZENUTL_TICK_THREAD_H_
#define ZENUTL_TICK_THREAD_H_

#include <atomic>

#include "zenutl/platform_types.h"
#include "zenutl/zn_event.h"

class TickThread {
 public:
  // Timed ticks only; `timeOut` in milliseconds (values above INFINITE count as INFINITE).
  TickThread(unsigned long timeOut, bool start);
  // Ticks on `tickEvent` only. The event stays the caller's: it isn't closed here.
  TickThread(void* tickEvent, bool start);
  // Both.
  TickThread(void* tickEvent, unsigned long timeOut, bool start);
  TickThread(const TickThread& other);
  TickThread& operator=(const TickThread& other);
  // Stops the thread as Stop() does, then closes the quit event.
  virtual ~TickThread();

  // Starts the thread; false if it is running already or can't be started. A thread that ended
  // by itself is cleaned up first.
  bool Start();
  // Tells the thread to end and waits for it, however long its current tick lasts. False only
  // when there was no thread, running or ended.
  bool Stop();
  bool IsRunning() const;

  void* GetTickEvent() const { return mTickEvent; }
  unsigned long GetTimeOut() const { return mTimeOut.load(std::memory_order_relaxed); }

 protected:
  typedef unsigned int (*ThreadProc)(void* self);

  // Called on the worker for each tick; does nothing here.
  virtual void Tick();
  // The function the thread runs, given this object; TickThreadProc unless overridden. A null
  // function makes Start() fail.
  virtual ThreadProc GetThreadProc() const;

  // The auto-reset event that Stop() sets; a replacement thread function ends when it is set.
  void* GetQuitEvent() const { return mQuitEvent; }
  // Takes effect from the thread's next wait; the wait in progress ends as it would have.
  void SetTimeOut(unsigned long timeOut);

 private:
  static unsigned int TickThreadProc(void* self);
  void Init(bool start);
  void EndThread();

  HANDLE mThread;                       // null when stopped
  std::atomic<unsigned long> mTimeOut;  // read by the worker before each wait
  HANDLE mQuitEvent;                    // owned
  HANDLE mTickEvent;                    // the caller's; null when none
};

#endif  // ZENUTL_TICK_THREAD_H_
