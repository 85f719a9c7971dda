// CFile: an unbuffered file opened on a path, the framework's file class as the stream classes
// need it. CArchive (carchive.h) adds the buffering and is what StreamReader and StreamWriter
// work on.
//
// Paths are Windows paths in either slash form. The share flags of the framework have no
// counterpart on Linux, where files are not locked against other openers; they are accepted and
// ignored, as are typeText and typeBinary (there is no text mode). Positions are 64-bit.
//
// Error contract: Open answers FALSE and fills the caller's CFileException; everything else
// throws CFileException (cexception.h) with the system's error number when the system refuses,
// and `invalidFile` when the file is not open. Read answers fewer bytes than asked only at the
// end of the file. The destructor closes the file and never throws.
#ifndef ZENUTL_CFILE_H_
#define ZENUTL_CFILE_H_

#include "zenutl/cexception.h"
#include "zenutl/cstring.h"
#include "zenutl/platform_types.h"

class CFile {
 public:
  enum OpenFlags {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    shareCompat = 0x0000,
    shareExclusive = 0x0010,
    shareDenyWrite = 0x0020,
    shareDenyRead = 0x0030,
    shareDenyNone = 0x0040,
    modeNoInherit = 0x0080,
    modeCreate = 0x1000,      // creates the file, emptying one that exists...
    modeNoTruncate = 0x2000,  // ...unless this is given too
    typeText = 0x4000,
    typeBinary = 0x8000,
  };
  enum SeekPosition { begin = 0x0, current = 0x1, end = 0x2 };

  CFile();
  // Opens as Open does, or throws the CFileException Open would have filled.
  CFile(const char* fileName, UINT openFlags);
  virtual ~CFile();
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  // Opens `fileName`; a file that is already open is closed first. FALSE on failure, with
  // `error` (if given) describing it.
  virtual BOOL Open(const char* fileName, UINT openFlags, CFileException* error = nullptr);
  // Up to `count` bytes from the current position; fewer only at the end of the file.
  virtual UINT Read(void* buffer, UINT count);
  // All `count` bytes at the current position; a full disk throws `diskFull`.
  virtual void Write(const void* buffer, UINT count);
  // Moves relative to `from` (begin, current or end) and answers the new position. A position
  // before the start throws `badSeek`; one past the end is allowed, as on Windows.
  virtual ULONGLONG Seek(LONGLONG offset, UINT from);
  void SeekToBegin() { Seek(0, begin); }
  ULONGLONG SeekToEnd() { return Seek(0, end); }
  virtual ULONGLONG GetPosition() const;
  virtual ULONGLONG GetLength() const;
  // Commits what was written to the disk (fsync).
  virtual void Flush();
  // Closes the file; throws if the system reports a failure of earlier writes.
  virtual void Close();
  // Closes the file, ignoring any failure.
  virtual void Abort();

  CString GetFilePath() const { return mPath; }

 private:
  // Throws CFileException with `cause` or, for 0, the cause that fits errno.
  [[noreturn]] void Fail(int cause = 0) const;
  int CheckedDescriptor() const;

  int mFd;
  CString mPath;
};

#endif  // ZENUTL_CFILE_H_
