#include "zenutl/language_string.h"

#include <boost/shared_array.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <cstdarg>
#include <map>

#include "zenutl/resource_module.h"
#include "zenutl/zn_string.h"

namespace {

// The size of the buffer every text is loaded into; longer texts are cut to one less.
constexpr int kLoadBufferSize = 1024;

typedef std::map<unsigned int, boost::shared_array<char> > TextCache;

// Made on first use and never destroyed, so that a pointer from Get outlives every static
// object that might still hold it.
TextCache& Cache() {
  static boost::shared_ptr<TextCache>* const sCache =
      new boost::shared_ptr<TextCache>(new TextCache);
  return **sCache;
}

ZnLanguageStringSubject* spSubject = nullptr;

// Identifiers come in as unsigned numbers but the two special ones are written as -1 and -2.
const int kNullEntry = -1;
const int kEmptyEntry = -2;

}  // namespace

HINSTANCE LanguageString::mhResourceInstance = nullptr;

boost::mutex& LanguageString::GetMutex() {
  static boost::mutex* const sMutex = new boost::mutex;
  return *sMutex;
}

void LanguageString::SetResourceInstance(HINSTANCE module) {
  boost::unique_lock<boost::mutex> lock(GetMutex());
  mhResourceInstance = module;
}

HINSTANCE LanguageString::GetResourceInstance() {
  boost::unique_lock<boost::mutex> lock(GetMutex());
  return mhResourceInstance;
}

const char* LanguageString::Get(unsigned int id) {
  boost::unique_lock<boost::mutex> lock(GetMutex());
  TextCache& cache = Cache();
  const TextCache::const_iterator found = cache.find(id);
  if (found != cache.end()) return found->second.get();
  // The mutex stays held across the load, so one number is loaded once.
  char buffer[kLoadBufferSize];
  ZnLoadString(mhResourceInstance, id, buffer, kLoadBufferSize);
  boost::shared_array<char> text(ZnString::znstrdup(buffer));
  cache[id] = text;
  return text.get();
}

ZnLanguageStringVector::ZnLanguageStringVector(unsigned int first, ...)
    : mIdentifiers(new std::list<unsigned int>), mStrings(nullptr), mSubject(nullptr) {
  mIdentifiers->push_back(first);
  va_list args;
  va_start(args, first);
  // Read as int: the special identifiers are passed as the literals -1 and -2.
  for (int id = va_arg(args, int); id != 0; id = va_arg(args, int)) {
    mIdentifiers->push_back(static_cast<unsigned int>(id));
  }
  va_end(args);
  mStrings = new char*[mIdentifiers->size()]();
  mSubject = ZnLanguageStringSubject::Acquire();
  mSubject->Attach(this);
  if (mSubject->IsInitialized()) Init();
}

ZnLanguageStringVector::~ZnLanguageStringVector() {
  // Leave the registry this table is listed in, even if the pointer was cleared by Disconnect:
  // Initialize must never reach a table that is gone.
  ZnLanguageStringSubject* subject = ZnLanguageStringSubject::Peek();
  if (subject != nullptr && subject->Detach(this)) subject->Release();
  for (std::size_t i = 0; i < mIdentifiers->size(); ++i) delete[] mStrings[i];
  delete[] mStrings;
  delete mIdentifiers;
}

ZnLanguageStringVector& ZnLanguageStringVector::operator=(const ZnLanguageStringVector& other) {
  mIdentifiers = other.mIdentifiers;
  mStrings = other.mStrings;
  mSubject = other.mSubject;
  return *this;
}

void ZnLanguageStringVector::Init() {
  std::size_t index = 0;
  for (const unsigned int id : *mIdentifiers) {
    delete[] mStrings[index];
    const int signedId = static_cast<int>(id);
    if (signedId == kNullEntry) {
      mStrings[index] = nullptr;
    } else if (signedId == kEmptyEntry) {
      mStrings[index] = ZnString::znstrdup("");
    } else {
      mStrings[index] = ZnString::znstrdup(LanguageString::Get(id));
    }
    ++index;
  }
}

void ZnLanguageStringVector::Initialize() {
  ZnLanguageStringSubject* subject = ZnLanguageStringSubject::Acquire();
  subject->Notify();
  subject->EndInitialize();
}

ZnLanguageStringSubject* ZnLanguageStringSubject::Acquire() {
  if (spSubject == nullptr) spSubject = new ZnLanguageStringSubject;
  ++spSubject->mReferenceCount;
  return spSubject;
}

ZnLanguageStringSubject* ZnLanguageStringSubject::Peek() {
  return spSubject;
}

void ZnLanguageStringSubject::Release() {
  if (--mReferenceCount > 0) return;
  if (spSubject == this) spSubject = nullptr;
  delete this;
}

void ZnLanguageStringSubject::Attach(ZnLanguageStringVector* vector) {
  mVectors.push_back(vector);
}

bool ZnLanguageStringSubject::Detach(ZnLanguageStringVector* vector) {
  for (auto it = mVectors.begin(); it != mVectors.end(); ++it) {
    if (*it == vector) {
      mVectors.erase(it);
      return true;
    }
  }
  return false;
}

void ZnLanguageStringSubject::Notify() {
  for (ZnLanguageStringVector* vector : mVectors) vector->Init();
  mInitialized = true;
}
