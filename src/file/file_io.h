// Small pieces of file reading shared by the path and file functions.
#ifndef ZENUTL_FILE_FILE_IO_H_
#define ZENUTL_FILE_FILE_IO_H_

#include <sys/types.h>

#include <cstddef>

namespace zenutl {
namespace file {

// Closes a descriptor when the scope ends.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : mFd(fd) {}
  ~FileDescriptor();
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int get() const { return mFd; }
  bool valid() const { return mFd >= 0; }
  // Closes now and tells whether the system accepted everything written.
  bool Close();

 private:
  int mFd;
};

// Opens an existing file for reading, as the runtime's fopen "rb" does: a folder is refused
// (EISDIR). -1 with errno on failure. `path` is in Windows form.
int OpenFileForReading(const char* path);

// Reads until `size` bytes or the end of the file; -1 with errno on a read error.
ssize_t ReadBlock(int fd, void* buffer, std::size_t size);

}  // namespace file
}  // namespace zenutl

#endif  // ZENUTL_FILE_FILE_IO_H_
