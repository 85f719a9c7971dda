// Replacing a file's contents so that no reader and no crash ever sees half of it.
//
// `WriteFileAtomically` writes the new bytes to a temporary file in the target's own folder,
// flushes them to the disk, and renames the temporary over the target: afterwards the path names
// either the old file, whole, or the new one, whole. Settings files and audit trails are written
// this way so that a full disk or a crash mid-write never costs the user what was there before.
//
// The replacement keeps the rules an in-place write would have kept: a read-only file is
// refused, the new file has the old one's permission bits, owner and group, and where the
// folder refuses new files but the file itself may be written (a common way to keep users from
// deleting a file they must update), or the owner cannot be kept, the bytes are written into the
// file itself instead, without the atomicity.
//
// Temporaries are made exclusively under unique hidden names, ".<name>.tmp.<pid>.<n>.<attempt>",
// and their writer holds an advisory lock on them until they have taken the target's place. A
// writer killed part-way leaves its temporary behind; the next writer beside the same target
// removes it (one that is locked is left alone, and so is one whose process still runs unless it
// has not changed for a minute), and stores that list a folder skip such names
// (`IsTemporaryName`).
//
// The system calls that can fail half-way (write, fsync, rename) go through the replaceable
// table of file_calls.h, so that tests can simulate a full disk, short writes, a failed flush
// and a refused rename on real files.
//
// Error contract: nothing throws; a failure answers false, removes the temporary file, and
// describes the failure with the system's own error text, errno set. The target stays as it was,
// except after a failed write in place, which can leave it partly written.
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
// its target replaced. An existing file's permission bits, owner and group are kept; a new file
// gets 0666 less the umask. A file that this process may not write, or that has no write
// permission bit at all (the read-only attribute, which holds for root too), is refused with
// EACCES, as is anything but a regular file. The new file's modification time is always later
// than the old one's, so that a cache keyed on (device, inode, size, modification time) never
// takes the new file for an old one. On failure answers false and, if `error` isn't null, stores
// a one-line description. On success `written`, if not null, receives the status of the new file
// as it was just before the rename (its inode tells it from any later replacement; after a write
// in place it is the old inode).
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
// exclusively (never an existing file) with 0666 less the umask, and locked (flock) for as long
// as the descriptor stays open: keep it open until the temporary has been renamed or removed,
// or another writer may take it for a dead writer's. Stale temporaries of the same target are
// removed first (RemoveStaleTemporaries), unless this process found none there within the
// last second. Answers its descriptor and sets `temporary` to its path, or answers -1 with
// errno set. For writers that stream their content and so cannot hand WriteFileAtomically the
// whole of it.
int CreateTemporaryBeside(const std::string& nativeTarget, std::string& temporary);

// Whether a file name (without folder) has the form of the temporaries above,
// ".<name>.tmp.<pid>.<n>.<attempt>": ".a.xml.tmp.12.0.0" => true, "a.xml" => false.
bool IsTemporaryName(const std::string& fileName);

// Removes the temporaries beside `nativeTarget` that their writers left behind: those that no
// process holds locked and whose writer's process is gone (or, for a process id that is in use
// again, that have not changed for a minute). A temporary that cannot be opened stays. Answers
// how many temporaries of the target are still there.
int RemoveStaleTemporaries(const std::string& nativeTarget);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_ATOMIC_FILE_H_
