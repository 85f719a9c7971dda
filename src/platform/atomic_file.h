// Replacing a file's contents so that no reader and no crash ever sees half of it.
//
// `WriteFileAtomically` writes the new bytes to a temporary file in the target's own folder,
// flushes them to the disk, and renames the temporary over the target: afterwards the path names
// either the old file, whole, or the new one, whole. Settings files and audit trails are written
// this way so that a full disk or a crash mid-write never costs the user what was there before.
//
// The system calls that can fail half-way (write, fsync, rename) go through the replaceable
// table of file_calls.h, so that tests can simulate a full disk, short writes, a failed flush
// and a refused rename on real files.
//
// Error contract: nothing throws; a failure answers false, leaves the target as it was, removes
// the temporary file, and describes the failure with the system's own error text.
#ifndef ZENUTL_PLATFORM_ATOMIC_FILE_H_
#define ZENUTL_PLATFORM_ATOMIC_FILE_H_

#include <sys/stat.h>
#include <sys/types.h>

#include <ostream>
#include <sstream>
#include <string>

namespace zenutl {
namespace platform {

// How far WriteFileAtomically goes before it answers.
enum class Durability {
  // The new file and the rename are synced to the disk: they survive a power loss.
  kPowerLoss,
  // No sync: the rename is atomic for every process, so a crash of this one leaves the old file
  // or the new one whole, but a power loss may undo the replacement (and on some file systems
  // leave an empty file) unless the caller syncs file and folder later.
  kProcessCrash,
};

// Replaces the file at `nativePath` (a Linux path) with `bytes`. A symbolic link is followed and
// its target replaced. An existing file's permission bits are kept; a new file gets 0666 less the
// umask. The new file's modification time is always later than the old one's, so that a cache
// keyed on (device, inode, size, modification time) never takes the new file for an old one.
// On failure answers false and, if `error` isn't null, stores a one-line description. On success
// `written`, if not null, receives the status of the new file as it was just before the rename
// (its inode tells it from any later replacement).
bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes,
                         std::string* error, struct stat* written = nullptr,
                         Durability durability = Durability::kPowerLoss);

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

// Creates a new, empty, hidden file in the folder of `nativeTarget`, for writing what is to
// take the target's place: "dir/name" => "dir/.name.tmp.<pid>.<n>.<attempt>". It is made
// exclusively (never an existing file) with 0666 less the umask. Answers its descriptor and
// sets `temporary` to its path, or answers -1 with errno set. For writers that stream their
// content and so cannot hand WriteFileAtomically the whole of it.
int CreateTemporaryBeside(const std::string& nativeTarget, std::string& temporary);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_ATOMIC_FILE_H_
