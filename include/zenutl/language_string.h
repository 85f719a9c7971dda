// LanguageString: user-visible text by number, in the language the application chose.
//
// Every translatable text of the library is a numbered string. The application selects a
// resource module (a catalogue file, see resource_module.h) with `SetResourceInstance`; until it
// does, a built-in English catalogue answers for every number this library itself uses, so a
// host that sets nothing still shows meaningful text. A text, once fetched, is kept for the life
// of the process: `Get` returns the same pointer for the same number forever, and a later change
// of module does not change texts already fetched.
//
// `ZnLanguageStringVector` is a table of such texts that can be a static object, built before
// any module is selected, and filled by `ZnLanguageStringVector::Initialize` once the
// application has chosen its language. All tables register with the one
// `ZnLanguageStringSubject`.
//
// Error contract: nothing here throws (apart from allocation failure) and nothing reports. A
// number the module doesn't have gives "". Texts are cut at 1023 characters. `Get` may be called
// from any thread; the tables and `Initialize` belong to the start-up of the process and take no
// lock.
#ifndef ZENUTL_LANGUAGE_STRING_H_
#define ZENUTL_LANGUAGE_STRING_H_

#include <list>

#include "zenutl/platform_types.h"

namespace boost {
class mutex;
}

class LanguageString {
 public:
  // Selects the module to load from; null selects the built-in catalogue. Nothing is reloaded.
  // The module must stay loaded while it is selected.
  static void SetResourceInstance(HINSTANCE module);
  static HINSTANCE GetResourceInstance();

  // The text with number `id`, owned by the library and valid until the process ends.
  static const char* Get(unsigned int id);

 private:
  static boost::mutex& GetMutex();
  static HINSTANCE mhResourceInstance;
};

class ZnLanguageStringSubject;

// A table of language strings by number. The identifiers end at the first 0 among the variable
// arguments; `first` is always taken, even when it is 0 (then string number 0). Two identifiers
// are special: -1 gives a null entry, -2 an empty string. Entries are null until the table is
// filled: at once if `Initialize` has already run, otherwise by `Initialize`.
//
//   static ZnLanguageStringVector sNames(17059, -1, -2, 0);  // 3 entries
//
// Copying by `operator=` is shallow: both tables then share their identifiers and texts, and
// only one of them may be destroyed. The tables are meant to be static objects living until the
// process ends.
class ZnLanguageStringVector {
 public:
  ZnLanguageStringVector(unsigned int first, ...);
  ~ZnLanguageStringVector();
  ZnLanguageStringVector(const ZnLanguageStringVector&) = delete;
  ZnLanguageStringVector& operator=(const ZnLanguageStringVector& other);

  // Reloads every entry from LanguageString::Get.
  void Init();
  // Fills every registered table, in order of registration, and marks the registry initialised.
  static void Initialize();

  operator char**() const { return mStrings; }                                  // NOLINT
  operator const char**() const { return const_cast<const char**>(mStrings); }  // NOLINT
  // The entry at `index`; the index is not checked.
  const char* operator[](int index) const { return mStrings[index]; }
  // Number of entries.
  int GetSize() const { return static_cast<int>(mIdentifiers->size()); }

  // Set or clear the registry pointer, and nothing more.
  void Connect(ZnLanguageStringSubject* subject) { mSubject = subject; }
  void Disconnect() { mSubject = nullptr; }

 private:
  std::list<unsigned int>* mIdentifiers;
  char** mStrings;
  ZnLanguageStringSubject* mSubject;
};

// The one registry of all tables. It is made by the first table or by the first Initialize,
// counts one use for each registered table and each running Initialize, and is freed when the
// last table leaves. A table made after that starts a fresh registry, which waits for the next
// Initialize.
class ZnLanguageStringSubject {
 public:
  // The registry, made on first use; raises the use count by one.
  static ZnLanguageStringSubject* Acquire();
  // Lowers the use count for a table that has left; at 0 the registry is freed.
  void Release();

  void Attach(ZnLanguageStringVector* vector);
  // Removes the table; returns whether it was registered.
  bool Detach(ZnLanguageStringVector* vector);
  // Calls Init on every table in order and marks the registry initialised.
  void Notify();
  bool IsInitialized() const { return mInitialized; }
  int GetReferenceCount() const { return mReferenceCount; }
  // The registry if one exists now, without counting a use; for tests and diagnostics.
  static ZnLanguageStringSubject* Peek();

 private:
  friend class ZnLanguageStringVector;
  ZnLanguageStringSubject() = default;
  // Lowers the use count of a finished Initialize; the registry stays, remembering that it is
  // initialised, so that tables made later are filled at once.
  void EndInitialize() { --mReferenceCount; }

  bool mInitialized = false;
  int mReferenceCount = 0;
  std::list<ZnLanguageStringVector*> mVectors;
};

#endif  // ZENUTL_LANGUAGE_STRING_H_
