// An auto- or manual-reset event for a test, closed when the test ends.
#ifndef ZENUTL_TESTS_CONCURRENCY_SCOPED_EVENT_H_
#define ZENUTL_TESTS_CONCURRENCY_SCOPED_EVENT_H_

#include "zenutl/zn_event.h"

namespace zenutl_test {

class ScopedEvent {
 public:
  explicit ScopedEvent(bool manualReset = false, bool initialState = false)
      : mHandle(ZnCreateEvent(manualReset, initialState)) {}
  ~ScopedEvent() { ZnCloseHandle(mHandle); }
  ScopedEvent(const ScopedEvent&) = delete;
  ScopedEvent& operator=(const ScopedEvent&) = delete;
  operator HANDLE() const { return mHandle; }  // NOLINT: stands where a handle does

 private:
  HANDLE mHandle;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_CONCURRENCY_SCOPED_EVENT_H_
