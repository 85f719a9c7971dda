#include "zenutl/zn_semaphore.h"

#include <exception>
#include <memory>
#include <string>

#include "platform/semaphore_slots.h"
#include "zenutl/exception.h"

namespace {

const char kUnknownFailure[] = "Unknown exception when initialising ZnSemaphore";

}  // namespace

ZnSemaphore::ZnSemaphore() = default;

ZnSemaphore::ZnSemaphore(const ZnSemaphore& other) = default;

ZnSemaphore& ZnSemaphore::operator=(const ZnSemaphore& other) = default;

ZnSemaphore::~ZnSemaphore() {
  if (mSemaphore) mSemaphore->Give();
}

void ZnSemaphore::Init(long maxUsers, const char* name) {
  if (maxUsers < 1) throw Exception("ZnSemaphore: Zero users");
  try {
    std::string why;
    std::unique_ptr<zenutl::platform::SemaphoreSlots> opened =
        zenutl::platform::SemaphoreSlots::Open(maxUsers, name, &why);
    if (!opened) throw Exception(kUnknownFailure, Exception(why.c_str()));
    mSemaphore.reset(opened.release());
  } catch (const Exception&) {
    throw;
  } catch (const std::exception& e) {
    throw Exception(kUnknownFailure, Exception(e.what()));
  } catch (...) {
    throw Exception(kUnknownFailure);
  }
}

bool ZnSemaphore::Lock() {
  if (!mSemaphore) throw Exception("ZnSemaphore is not Initialised");
  return mSemaphore->TryTake();
}

bool ZnSemaphore::UnLock() {
  return mSemaphore && mSemaphore->Give();
}
