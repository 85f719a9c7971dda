// Replacing a file's contents so that no reader and no crash ever sees half of it.
//
// `WriteFileAtomically` writes the new bytes to a temporary file in the target's own folder,
// flushes them to the disk, and renames the temporary over the target: afterwards the path names
// either the old file, whole, or the new one, whole. Settings files and audit trails are written
// this way so that a full disk or a crash mid-write never costs the user what was there before.
//
// The system calls that can fail half-way (write, fsync, rename) go through replaceable hooks, so
// that tests can simulate a full disk, short writes and a refused rename on real files.
//
// Error contract: nothing throws; a failure answers false, leaves the target as it was, removes
// the temporary file, and describes the failure with the system's own error text.
#ifndef ZENUTL_PLATFORM_ATOMIC_FILE_H_
#define ZENUTL_PLATFORM_ATOMIC_FILE_H_

#include <sys/stat.h>
#include <sys/types.h>

#include <functional>
#include <ostream>
#include <sstream>
#include <string>

namespace zenutl {
namespace platform {

// Replaces the file at `nativePath` (a Linux path) with `bytes`. A symbolic link is followed and
// its target replaced. An existing file's permission bits are kept; a new file gets 0666 less the
// umask. The new file's modification time is always later than the old one's, so that a cache
// keyed on (device, inode, size, modification time) never takes the new file for an old one.
// On failure answers false and, if `error` isn't null, stores a one-line description. On success
// `written`, if not null, receives the status of the new file as it was just before the rename
// (its inode tells it from any later replacement).
bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes,
                         std::string* error, struct stat* written = nullptr);

// An output stream whose whole content replaces the file at `nativePath` by WriteFileAtomically
// each time it is flushed, and once more when it is destroyed with unflushed output (unless a
// replacement already failed). Nothing
// reaches the file before the first flush; a failed replacement sets badbit, so a writer that
// checks the stream after flushing knows whether the file holds its text. The previous file
// stays whole until a replacement succeeds.
class ReplacingFileStream : public std::ostream {
 public:
  explicit ReplacingFileStream(std::string nativePath);
  ~ReplacingFileStream() override;

 private:
  class Buffer : public std::stringbuf {
   public:
    explicit Buffer(std::string nativePath) : mPath(std::move(nativePath)) {}
    bool Dirty() const { return mDirty; }

   protected:
    int sync() override;
    std::streamsize xsputn(const char* data, std::streamsize count) override;
    int_type overflow(int_type ch) override;

   private:
    std::string mPath;
    bool mDirty = true;  // an empty stream still replaces the file with nothing
  };
  Buffer mBuffer;
};

// The system calls of WriteFileAtomically that tests may replace. Each behaves like the POSIX
// call of its name: -1 with errno set on failure; `write` may also write fewer bytes than asked.
struct AtomicFileHooks {
  std::function<ssize_t(int fd, const void* data, size_t size)> write;
  std::function<int(int fd)> fsync;
  std::function<int(const char* from, const char* to)> rename;
};

// The hooks that call the system directly.
AtomicFileHooks SystemAtomicFileHooks();

// Installs `hooks` for every later WriteFileAtomically in the process and returns the previous
// ones. An empty member falls back to the system call.
AtomicFileHooks SetAtomicFileHooks(AtomicFileHooks hooks);

// Installs hooks for the lifetime of the object and restores the previous ones afterwards.
class ScopedAtomicFileHooks {
 public:
  explicit ScopedAtomicFileHooks(AtomicFileHooks hooks)
      : previous_(SetAtomicFileHooks(std::move(hooks))) {}
  ~ScopedAtomicFileHooks() { SetAtomicFileHooks(std::move(previous_)); }
  ScopedAtomicFileHooks(const ScopedAtomicFileHooks&) = delete;
  ScopedAtomicFileHooks& operator=(const ScopedAtomicFileHooks&) = delete;

 private:
  AtomicFileHooks previous_;
};

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_ATOMIC_FILE_H_
