// The framework's file class on a Linux descriptor. Opening goes through OpenPath (Windows
// paths), writing and committing through the replaceable calls of file_calls.h, so tests can
// fill the disk under a real file.
#include "zenutl/cfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "file/file_io.h"
#include "platform/file_calls.h"
#include "platform/file_system.h"

namespace {

// The framework's cause for what the system said.
int CauseOf(int error) {
  switch (error) {
    case ENOENT:
      return CFileException::fileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return CFileException::badPath;
    case EMFILE:
    case ENFILE:
      return CFileException::tooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EBADF:
      return CFileException::accessDenied;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return CFileException::diskFull;
    case EIO:
      return CFileException::hardIO;
    default:
      return CFileException::genericException;
  }
}

int OpenFlagsOf(UINT openFlags) {
  int flags = O_RDONLY;
  if (openFlags & CFile::modeReadWrite) {
    flags = O_RDWR;
  } else if (openFlags & CFile::modeWrite) {
    flags = O_WRONLY;
  }
  if (openFlags & CFile::modeCreate) {
    flags |= O_CREAT;
    if (!(openFlags & CFile::modeNoTruncate)) flags |= O_TRUNC;
  }
  return flags;
}

}  // namespace

CFile::CFile() : mFd(-1) {}

CFile::CFile(const char* fileName, UINT openFlags) : mFd(-1) {
  CFileException error;
  if (!Open(fileName, openFlags, &error)) throw error;
}

CFile::~CFile() {
  Abort();
}

BOOL CFile::Open(const char* fileName, UINT openFlags, CFileException* error) {
  Abort();
  const int fd = zenutl::platform::OpenPath(fileName, OpenFlagsOf(openFlags), 0666);
  struct stat info;
  if (fd >= 0 && ::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    ::close(fd);
    errno = EISDIR;  // a folder is no file to the framework
  } else if (fd >= 0) {
    mFd = fd;
    mPath = fileName;
    return TRUE;
  }
  if (error != nullptr) *error = CFileException(CauseOf(errno), errno, fileName);
  return FALSE;
}

UINT CFile::Read(void* buffer, UINT count) {
  const ssize_t got = zenutl::file::ReadBlock(CheckedDescriptor(), buffer, count);
  if (got < 0) Fail();
  return static_cast<UINT>(got);
}

void CFile::Write(const void* buffer, UINT count) {
  zenutl::platform::WriteProgress progress;
  if (zenutl::platform::WriteAll(CheckedDescriptor(), buffer, count, &progress)) return;
  Fail(progress.stalled ? static_cast<int>(CFileException::diskFull) : 0);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from) {
  const int whence = from == current ? SEEK_CUR : from == end ? SEEK_END : SEEK_SET;
  const off_t position = ::lseek(CheckedDescriptor(), offset, whence);
  if (position < 0) Fail(CFileException::badSeek);
  return static_cast<ULONGLONG>(position);
}

ULONGLONG CFile::GetPosition() const {
  const off_t position = ::lseek(CheckedDescriptor(), 0, SEEK_CUR);
  if (position < 0) Fail();
  return static_cast<ULONGLONG>(position);
}

ULONGLONG CFile::GetLength() const {
  struct stat info;
  if (::fstat(CheckedDescriptor(), &info) != 0) Fail();
  return static_cast<ULONGLONG>(info.st_size);
}

void CFile::Flush() {
  if (zenutl::platform::Fsync(CheckedDescriptor()) != 0) Fail();
}

void CFile::Close() {
  const int fd = CheckedDescriptor();
  mFd = -1;
  // The descriptor is gone whatever close answers; an error still means lost writes.
  if (::close(fd) != 0 && errno != EINTR) Fail();
}

void CFile::Abort() {
  if (mFd >= 0) ::close(mFd);
  mFd = -1;
}

int CFile::CheckedDescriptor() const {
  if (mFd < 0) throw CFileException(CFileException::invalidFile, -1, mPath);
  return mFd;
}

void CFile::Fail(int cause) const {
  const int error = errno;
  throw CFileException(cause != 0 ? cause : CauseOf(error), error, mPath);
}
