// Events: flags that one thread sets and another waits for, named by handles.
//
// The applications drive a `TickThread` (tick_thread.h) with an event of their own, created,
// set and closed through Windows-shaped handle calls. These are those calls, under the
// library's names: `ZnCreateEvent` for CreateEventA (unnamed, without security attributes),
// `ZnSetEvent`, `ZnResetEvent`, `ZnWaitForSingleObject`, `ZnWaitForMultipleObjects` (wait for
// any, never for all) and `ZnCloseHandle`, with the Windows result codes below.
//
// An auto-reset event lets exactly one wait through per `ZnSetEvent` and is clear again
// afterwards; a manual-reset event stays set, letting every wait through, until `ZnResetEvent`.
// Setting an event that is set already changes nothing: sets don't count up.
//
// A handle is a number naming an entry of the library's table, never a pointer: a handle that
// was closed, or never existed, makes a call fail (false, or WAIT_FAILED) as it does on
// Windows, and never touches freed memory. Closed handle values are not given out again. A wait
// already in progress on a handle that another thread closes goes on to its normal end.
//
// Error contract: nothing here throws; failures answer null, false or WAIT_FAILED.
#ifndef ZENUTL_ZN_EVENT_H_
#define ZENUTL_ZN_EVENT_H_

#include "zenutl/platform_types.h"

// Results of the waits, and the time-out that never ends, with their Windows values. A wait for
// several handles answers WAIT_OBJECT_0 + i for the i-th.
#ifndef WAIT_OBJECT_0
#define WAIT_OBJECT_0 0x00000000UL
#endif
#ifndef WAIT_TIMEOUT
#define WAIT_TIMEOUT 0x00000102UL
#endif
#ifndef WAIT_FAILED
#define WAIT_FAILED 0xFFFFFFFFUL
#endif
#ifndef INFINITE
#define INFINITE 0xFFFFFFFFUL
#endif
#ifndef MAXIMUM_WAIT_OBJECTS
#define MAXIMUM_WAIT_OBJECTS 64
#endif

// A new event, set or clear as `initialState` says; null if it can't be made.
HANDLE ZnCreateEvent(bool manualReset, bool initialState);
// Sets or clears the event. False for a handle that isn't an open event.
bool ZnSetEvent(HANDLE event);
bool ZnResetEvent(HANDLE event);

// Waits until the object is set or `milliseconds` have passed (INFINITE: no limit; 0: just
// look). WAIT_OBJECT_0, WAIT_TIMEOUT, or WAIT_FAILED for a handle that isn't open. The library's
// own thread handles can be waited for too: they are set once the thread has ended.
DWORD ZnWaitForSingleObject(HANDLE object, DWORD milliseconds);
// Waits until any of `count` (1 to MAXIMUM_WAIT_OBJECTS) objects is set: WAIT_OBJECT_0 + i for
// the first set one in array order, so an earlier handle wins when several are set. Only that
// one is taken (and reset, if auto-reset). WAIT_FAILED for a bad count or a handle that isn't
// open.
DWORD ZnWaitForMultipleObjects(DWORD count, const HANDLE* objects, DWORD milliseconds);

// Closes the handle; false if it isn't open. A null handle is no handle.
bool ZnCloseHandle(HANDLE object);

#endif  // ZENUTL_ZN_EVENT_H_
