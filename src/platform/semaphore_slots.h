// A named counting semaphore shared between processes, that the kernel cleans up after them.
//
// Stands for the Windows named semaphore (CSemaphore) together with one holder's lock on it
// (CSingleLock). A POSIX named semaphore won't do: its count outlives the processes, so a holder
// that crashes loses its place until the machine restarts. Here the semaphore is a lock file in
// the user's runtime folder (runtime_folder.h) and its places are one-byte slots of that file,
// each taken with an open-file-description lock (F_OFD_SETLK). Such a lock belongs to the open
// file, not to the process or thread: each `SemaphoreSlots` object opens the file for itself,
// so two objects in one process are two holders, and the kernel frees a slot the moment its
// holder's file is closed, by the destructor or by the death of the process, however it dies.
// Nothing is counted in the file, so nothing is lost across restarts; the files themselves stay
// (removing one would race with a process opening it) and are tiny.
//
// The number of places is that of the first holder: like a Windows semaphore, which keeps the
// counts it was created with for as long as anyone has it open, the file records the limit of
// the object that opened it while nobody else had it open, and later objects adopt it. A byte
// that every open object holds a shared lock on tells whether anybody else has it open.
//
// A file descriptor inherited through fork() shares the open file, and so the holder's place,
// with the child; the file is opened close-on-exec, so programs started with exec don't inherit.
#ifndef ZENUTL_PLATFORM_SEMAPHORE_SLOTS_H_
#define ZENUTL_PLATFORM_SEMAPHORE_SLOTS_H_

#include <memory>
#include <string>

namespace zenutl {
namespace platform {

// The most places a semaphore can have, as on Windows, whose counts are 32-bit.
constexpr long kMaxSemaphorePlaces = 0x7FFFFFFF;

// The one mapping from a semaphore's name to its lock file's name, a valid Linux file name for
// any name (blanks, '/', ':', '\', non-ASCII bytes, any length) and different for different
// names. Letters, digits, '-', '_' and '.' stand for themselves, every other byte is "%XX"; a
// name too long for a file name keeps a readable start and ends in "~" and the MD5 of the whole
// name. "Local\" in front names the same semaphore as no prefix, as on Windows.
//   "Users"           => "semaphore-Users"
//   "Local\Users"     => "semaphore-Users"
//   "C:/data set"     => "semaphore-C%3A%2Fdata%20set"
std::string SemaphoreFileName(const std::string& name);

class SemaphoreSlots {
 public:
  // Opens the semaphore `name` with `places` places (1 to kMaxSemaphorePlaces; more are cut to
  // that), creating its file if needed. A null or empty name makes a semaphore of its own that
  // nobody else can open. Null, with a one-line reason in `error`, when the runtime folder or
  // the file can't be had.
  static std::unique_ptr<SemaphoreSlots> Open(long places, const char* name, std::string* error);
  ~SemaphoreSlots();
  SemaphoreSlots(const SemaphoreSlots&) = delete;
  SemaphoreSlots& operator=(const SemaphoreSlots&) = delete;

  // Takes a free place without waiting; false when all are taken. True at once while this
  // object holds a place already: an object holds one place at most.
  bool TryTake();
  // Gives the place back; true, also when none was held. False only if the system refused.
  bool Give();

  long Places() const { return mPlaces; }

 private:
  SemaphoreSlots(int fd, long places) : mFd(fd), mPlaces(places) {}

  int mFd;
  long mPlaces;
  long mHeldSlot = -1;  // -1: none
};

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_SEMAPHORE_SLOTS_H_
