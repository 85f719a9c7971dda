// The file operations of the log, on Linux.
//
// The log keeps one C stream open and stamps its records with the wall clock. These functions are
// the only places where it reaches the operating system. Writes and renames go through the
// replaceable table of file_calls.h, so that tests can change what the system answers (a full
// disk, a short write) without touching the log's own logic. Paths are in the library's Windows
// form and converted here.
#ifndef ZENUTL_PLATFORM_LOG_FILE_IO_H_
#define ZENUTL_PLATFORM_LOG_FILE_IO_H_

#include <cstddef>
#include <cstdio>

namespace zenutl {
namespace platform {

// Stands for fopen with a Windows path; "t" (text mode) means nothing here and is dropped.
std::FILE* OpenFile(const char* windowsPath, const char* mode);

// Stands for fopen with mode "at", the log's own file: appending, and where the file lets this
// process read it, reading too ("a+"), for the look at its end that finds a torn record.
std::FILE* OpenLogFile(const char* windowsPath);

// Stands for fwrite followed by fflush: the whole record goes to the kernel in one write on the
// descriptor, bypassing stdio buffers. On any failure (disk full, file size limit, I/O error)
// what was partly written is cut off again, so the file never holds a torn record; false then.
bool AppendRecord(std::FILE* file, const char* data, std::size_t size);

// Linux lets other processes write the same log file at the same time, which the Windows log's
// file did not (it was opened without sharing). These two keep a log that mends its file from
// mending one that another process is writing: TryLockAlone takes the open file for this
// process alone (flock LOCK_EX without waiting) and says whether it got it; LockShared then
// holds it shared with other logs for as long as it is open (flock LOCK_SH), waiting up to two
// seconds while another has it alone.
bool TryLockAlone(std::FILE* file);
void LockShared(std::FILE* file);

// pread on an open stream: up to `size` bytes from `offset`; the number read, or -1.
long long ReadAt(std::FILE* file, long long offset, char* buffer, std::size_t size);

// ftruncate on an open stream; true on success.
bool TruncateOpenFile(std::FILE* file, long long size);

// Stands for _fstat64i32 on an open stream: its size in bytes, or -1.
long long OpenFileSize(std::FILE* file);

// Stands for _stat: the modification time in seconds since 1970, or 0 when the file is absent.
long long FileModificationTime(const char* windowsPath);

// Stands for the log's remove and rename of its oldest backup and its move of the log file to
// that name, made one step here so that a backup of that name is there at every moment. Where
// the backup is a plain file the two swap names (renameat2 with RENAME_EXCHANGE) and the old
// backup, now under the log's name, is removed. Renaming the log over it would do as well, but
// ext4 then writes out the log's pending blocks before it returns, which costs more than a
// thousand messages. Otherwise, or where the file system cannot swap, a plain rename. True if
// the log file has moved.
bool MoveLogAside(const char* logWindowsPath, const char* backupWindowsPath);

// Stands for _ftime64: the wall clock as seconds since 1970 and milliseconds.
void CurrentTime(long long* seconds, int* milliseconds);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_LOG_FILE_IO_H_
