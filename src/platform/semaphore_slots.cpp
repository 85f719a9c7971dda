#include "platform/semaphore_slots.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/file_calls.h"
#include "platform/runtime_folder.h"
#include "zenutl/md5.h"

namespace zenutl {
namespace platform {
namespace {

// Byte 0 of the file is the presence byte; place i is byte 1 + i. The locks reach past the end
// of the file, which holds only the limit, as text.
const off_t kPresenceByte = 0;
const off_t kFirstSlot = 1;

// Longer encodings are cut and end in a digest, to stay well within NAME_MAX (255).
const std::size_t kLongestPlainFileName = 200;
const std::size_t kReadableStartOfLongName = 100;

bool IsPlainFileNameByte(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.';
}

// Takes or changes this open file's lock on one byte; F_UNLCK frees it. Without `wait`, false
// with EAGAIN when another open file's lock is in the way.
bool LockByte(int fd, short type, off_t byte, bool wait) {
  struct flock lock;
  std::memset(&lock, 0, sizeof(lock));
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = byte;
  lock.l_len = 1;
  while (::fcntl(fd, wait ? F_OFD_SETLKW : F_OFD_SETLK, &lock) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

bool WriteLimit(int fd, long places) {
  const std::string text = std::to_string(places) + "\n";
  return ::ftruncate(fd, 0) == 0 && ::lseek(fd, 0, SEEK_SET) == 0 &&
         WriteAll(fd, text.data(), text.size());
}

// The limit in the file, or 0 when it holds none.
long ReadLimit(int fd) {
  char text[32] = {};
  const ssize_t size = ::pread(fd, text, sizeof(text) - 1, 0);
  if (size <= 0) return 0;
  char* end = nullptr;
  const long places = std::strtol(text, &end, 10);
  return *end == '\n' && places >= 1 && places <= kMaxSemaphorePlaces ? places : 0;
}

// Makes every open object of one file agree on the number of places. An object that finds
// itself alone (it gets the presence byte exclusively) writes its own limit, then shares the
// byte; the others wait for the byte to be shared and read the limit. A newcomer that comes
// after everyone else has gone is alone once it holds the shared lock, and so writes anew.
bool AgreeOnPlaces(int fd, long* places, std::string* error) {
  if (!LockByte(fd, F_WRLCK, kPresenceByte, false)) {
    if (!LockByte(fd, F_RDLCK, kPresenceByte, true)) {
      *error = std::string("can not lock the semaphore's file: ") + std::strerror(errno);
      return false;
    }
    if (!LockByte(fd, F_WRLCK, kPresenceByte, false)) {
      const long agreed = ReadLimit(fd);
      if (agreed > 0) *places = agreed;
      return true;
    }
  }
  // Alone, with the byte exclusively: write the limit, then share the byte.
  if (!WriteLimit(fd, *places) || !LockByte(fd, F_RDLCK, kPresenceByte, false)) {
    *error = std::string("can not set up the semaphore's file: ") + std::strerror(errno);
    return false;
  }
  return true;
}

int OpenSemaphoreFile(const char* name, std::string* error) {
  if (name == nullptr || *name == 0) {
    const int fd = ::memfd_create("zenutl-semaphore", MFD_CLOEXEC);
    if (fd < 0) *error = std::string("can not make a semaphore: ") + std::strerror(errno);
    return fd;
  }
  std::string folder;
  if (!LibraryRuntimeFolder(&folder, error)) return -1;
  const std::string path = folder + "/" + SemaphoreFileName(name);
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (fd < 0) *error = "can not open " + path + ": " + std::strerror(errno);
  return fd;
}

}  // namespace

std::string SemaphoreFileName(const std::string& name) {
  static const char kLocalPrefix[] = "Local\\";
  const std::string plain = name.compare(0, sizeof(kLocalPrefix) - 1, kLocalPrefix) == 0
                                ? name.substr(sizeof(kLocalPrefix) - 1)
                                : name;
  std::string encoded = "semaphore-";
  for (const unsigned char c : plain) {
    if (IsPlainFileNameByte(c)) {
      encoded += static_cast<char>(c);
    } else {
      char escaped[4];
      std::snprintf(escaped, sizeof(escaped), "%%%02X", c);
      encoded += escaped;
    }
  }
  if (encoded.size() > kLongestPlainFileName) {
    encoded.resize(kReadableStartOfLongName);
    encoded += "~";
    encoded += MD5(plain.data(), static_cast<unsigned int>(plain.size())).GetDigest();
  }
  return encoded;
}

std::unique_ptr<SemaphoreSlots> SemaphoreSlots::Open(long places, const char* name,
                                                     std::string* error) {
  const int fd = OpenSemaphoreFile(name, error);
  if (fd < 0) return nullptr;
  long agreed = std::min(std::max(places, 1L), kMaxSemaphorePlaces);
  if (!AgreeOnPlaces(fd, &agreed, error)) {
    ::close(fd);
    return nullptr;
  }
  return std::unique_ptr<SemaphoreSlots>(new SemaphoreSlots(fd, agreed));
}

SemaphoreSlots::~SemaphoreSlots() {
  ::close(mFd);  // the kernel frees this object's place and presence with its open file
}

// Holders take the lowest free places, so the walk stops after about as many slots as there are
// holders, however large the limit.
bool SemaphoreSlots::TryTake() {
  if (mHeldSlot >= 0) return true;
  for (long slot = 0; slot < mPlaces; ++slot) {
    if (LockByte(mFd, F_WRLCK, kFirstSlot + slot, false)) {
      mHeldSlot = slot;
      return true;
    }
    if (errno != EAGAIN && errno != EACCES) return false;
  }
  return false;
}

bool SemaphoreSlots::Give() {
  if (mHeldSlot < 0) return true;
  if (!LockByte(mFd, F_UNLCK, kFirstSlot + mHeldSlot, false)) return false;
  mHeldSlot = -1;
  return true;
}

}  // namespace platform
}  // namespace zenutl
