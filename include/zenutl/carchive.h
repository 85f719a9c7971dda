// CArchive: a buffered, one-direction byte channel over an open CFile (cfile.h), the
// framework's archive as the stream classes (stream_reader.h, stream_writer.h) use it. An
// archive either loads (reads) or stores (writes), fixed when it is made.
//
// The archive reads and writes the file in blocks of its buffer's size, so the file's own
// position runs ahead of (loading) or behind (storing) the archive's. `Flush` brings the two
// together: a storing archive writes out its buffer, a loading one moves the file back over the
// bytes it has buffered but not handed out. Whoever uses `GetFile()` to ask or change the
// position must flush first; the stream classes do.
//
// Error contract: failures of the file pass through as CFileException. Reading from an archive
// that stores throws CArchiveException `writeOnly`, writing to one that loads `readOnly`, any use
// after Close `genericException`. Read answers fewer bytes than asked only at the end of the
// file. The destructor closes the archive (flushing a storing one) and never throws: call Close
// first to see a failure of the last write.
// The archive does not own the file.
#ifndef ZENUTL_CARCHIVE_H_
#define ZENUTL_CARCHIVE_H_

#include <vector>

#include "zenutl/cexception.h"
#include "zenutl/cfile.h"
#include "zenutl/platform_types.h"

class CArchive {
 public:
  enum Mode { store = 0, load = 1 };

  // `mode` is store or load. Buffers smaller than 128 bytes are made 128 bytes.
  CArchive(CFile* file, UINT mode, int bufferSize = 4096);
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  BOOL IsLoading() const { return (mMode & load) != 0; }
  BOOL IsStoring() const { return (mMode & load) == 0; }
  // The file, or null once the archive is closed.
  CFile* GetFile() const { return mFile; }

  UINT Read(void* buffer, UINT count);
  void Write(const void* buffer, UINT count);
  // Brings the file's position to the archive's, as described above.
  void Flush();
  // Flushes and lets go of the file, which stays open.
  void Close();
  // Lets go of the file without writing what is buffered.
  void Abort();

 private:
  CFile& OpenFile(int misuse) const;

  CFile* mFile;
  UINT mMode;
  std::vector<char> mBuffer;
  std::size_t mNext;   // loading: next byte to hand out; storing: next free byte
  std::size_t mLimit;  // loading: end of the buffered bytes
};

#endif  // ZENUTL_CARCHIVE_H_
