#include "zenutl/zn_auto_lock.h"

#include <boost/thread/recursive_mutex.hpp>
#include <boost/thread/tss.hpp>

#include "platform/thread_handle.h"
#include "zenutl/exception.h"
#include "zenutl/log.h"

namespace {

struct Resource {
  Resource(const std::string& name, unsigned int index) : name(name), index(index) {}
  const std::string name;
  const unsigned int index;
  boost::recursive_mutex lock;
};

typedef boost::unique_lock<boost::recursive_mutex> ResourceLock;

struct HeldResource {
  // Locks the resource, waiting as long as another thread holds it.
  explicit HeldResource(Resource* resource) : resource(resource), lock(resource->lock) {}
  const Resource* resource;
  ResourceLock lock;
};

// What one thread holds, in the order it locked, latest last.
typedef std::vector<HeldResource> HeldList;

// Filled by Initialize before threads start, read-only afterwards. Neither the table nor its
// resources are ever destroyed: a thread may still lock while the process exits.
std::vector<Resource*>& Resources() {
  static std::vector<Resource*>* const resources = new std::vector<Resource*>;
  return *resources;
}

// The calling thread's list, found without a lookup. The thread_specific_ptr below owns it and
// deletes it when the thread ends; this copy of the pointer only saves finding it there, which
// costs more than the rest of a lock. Initial-exec: one load from the thread's block instead of a
// call to find the library's thread-local storage; a single pointer fits in the room the loader
// keeps for libraries opened later, too.
__attribute__((tls_model("initial-exec"))) thread_local HeldList* tHeld = nullptr;

// A thread that ends while it holds locks leaves the resources locked: the list goes, the locks
// stay, just as they would if the thread were still running.
void ForgetWithoutUnlocking(HeldList* held) {
  for (HeldResource& entry : *held) entry.lock.release();
  if (tHeld == held) tHeld = nullptr;
  delete held;
}

// The thread's first lock makes its list.
__attribute__((noinline)) HeldList& NewHeldList() {
  static boost::thread_specific_ptr<HeldList>* const owner =
      new boost::thread_specific_ptr<HeldList>(&ForgetWithoutUnlocking);
  HeldList* list = new HeldList;
  owner->reset(list);
  tHeld = list;
  return *list;
}

inline HeldList& HeldByThisThread() {
  return tHeld != nullptr ? *tHeld : NewHeldList();
}

[[noreturn]] void RefuseOutOfOrder(const Resource& wanted, const HeldList& held) {
  CString text;
  text.Format(
      "Deadlock detected for thread %ld while trying to lock %s. The following resources were "
      "locked:",
      zenutl::platform::CurrentThreadId(), wanted.name.c_str());
  for (const HeldResource& entry : held) text.AppendFormat("\n%s", entry.resource->name.c_str());
  Log::WriteMessage("Resource", "Lock", text, Log::Critical, false);
  throw DeadlockException(text);
}

// Taking a resource the thread holds already is always allowed; otherwise everything held must
// come earlier in the order.
void CheckOrder(const Resource& wanted, const HeldList& held) {
  bool outOfOrder = false;
  for (const HeldResource& entry : held) {
    if (entry.resource == &wanted) return;
    outOfOrder = outOfOrder || entry.resource->index > wanted.index;
  }
  if (outOfOrder) RefuseOutOfOrder(wanted, held);
}

}  // namespace

void ZnAutoLock::Initialize(const std::vector<std::string>& names) {
  std::vector<Resource*>& resources = Resources();
  for (unsigned int index = 0; index < names.size(); ++index) {
    resources.push_back(new Resource(names[index], index));
  }
}

ZnAutoLock::ZnAutoLock(unsigned int index) : mIndex(index) {
  const std::vector<Resource*>& resources = Resources();
  if (index >= resources.size()) {
    CString text;
    text.Format("ZnAutoLock: there is no resource %u, only %u were initialised", index,
                static_cast<unsigned int>(resources.size()));
    throw Exception(text);
  }
  Resource& resource = *resources[index];
  HeldList& held = HeldByThisThread();
  CheckOrder(resource, held);
  held.emplace_back(&resource);
}

ZnAutoLock::~ZnAutoLock() {
  HeldList& held = HeldByThisThread();
  if (held.empty()) return;
  HeldResource& latest = held.back();
  if (latest.lock.owns_lock()) latest.lock.unlock();
  held.pop_back();
}
