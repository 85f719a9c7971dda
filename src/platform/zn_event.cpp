// The event calls of zn_event.h on the library's handle table.
#include "zenutl/zn_event.h"

#include <memory>
#include <new>

#include "platform/handle_table.h"

namespace {

using zenutl::platform::Waitable;

// CreateEventA's object: nothing beyond the state every waitable object has.
class Event : public Waitable {
 public:
  using Waitable::Waitable;
};

// Sets or clears an open event under the table's lock; false for anything else.
bool SetEventState(HANDLE event, bool set) {
  const std::shared_ptr<Waitable> object = zenutl::platform::ObjectOfHandle(event);
  if (dynamic_cast<Event*>(object.get()) == nullptr) return false;
  std::unique_lock<std::mutex> lock = zenutl::platform::LockHandleTable();
  if (set) {
    object->Set();
  } else {
    object->Reset();
  }
  return true;
}

}  // namespace

HANDLE ZnCreateEvent(bool manualReset, bool initialState) {
  try {
    return zenutl::platform::OpenHandle(std::make_shared<Event>(manualReset, initialState));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool ZnSetEvent(HANDLE event) {
  return SetEventState(event, true);
}

bool ZnResetEvent(HANDLE event) {
  return SetEventState(event, false);
}

DWORD ZnWaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return zenutl::platform::WaitForAnyHandle(1, &object, milliseconds);
}

DWORD ZnWaitForMultipleObjects(DWORD count, const HANDLE* objects, DWORD milliseconds) {
  return zenutl::platform::WaitForAnyHandle(count, objects, milliseconds);
}

bool ZnCloseHandle(HANDLE object) {
  return zenutl::platform::CloseHandleEntry(object);
}
