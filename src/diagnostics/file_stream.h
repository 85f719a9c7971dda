// FileStream: the file behind the process log, with its record layout and its rotation.
//
// The log (zenutl/log.h) owns one of these and serialises every call to it; this class has no
// lock of its own. It writes whole records, each in one write to the system, and after every
// message moves the file aside when it has grown past the size limit. The move is one rename
// over the oldest backup, so every backup is there at every moment.
//
// A record is whole or absent. A write that fails part-way is taken back at once. A process
// killed in the middle of a write leaves the record's first part at the end of the file; the
// next log to open the file cuts it off, unless another process has the file open too (it
// might be writing that record still).
//
// Failures are never reported: a record that cannot be written is dropped whole, and once the
// file cannot be reopened after a rotation the stream stays closed and drops everything.
#ifndef ZENUTL_DIAGNOSTICS_FILE_STREAM_H_
#define ZENUTL_DIAGNOSTICS_FILE_STREAM_H_

#include <cstddef>
#include <cstdio>
#include <string>

#include "zenutl/cstring.h"

class FileStream {
 public:
  // The 32 characters that end every record.
  static const char* const kSeparator;
  // Room for any time stamp, terminator included.
  static constexpr std::size_t kStampSize = 64;

  FileStream();
  // Writes the closing record if the file is open.
  ~FileStream();
  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;

  // Opens `fileName` for appending, cutting off a record torn by a killed writer, and writes the
  // opening record. False for an empty name or a file that cannot be opened.
  bool Open(const char* fileName);
  // Writes the closing record and closes the file; nothing when closed.
  void Close();
  bool IsOpen() const { return mFile != nullptr; }

  // Writes `text` and the separator as one record, then rotates if the file is too large.
  void WriteMessage(const CString& text);
  // The same for a record that starts with the time stamp of now: stamp, `body`, separator.
  void WriteStampedMessage(const char* body, std::size_t length);
  // Writes `text` as it stands, without rotating; false when closed or the write failed.
  bool WriteRaw(const CString& text);

  // The tail of the file, as Log::GetBuffer describes. Reopens the file afterwards whatever
  // happens, so a file that has gone leaves the stream closed.
  bool GetBuffer(char* buffer, unsigned int size);

  long GetMaxSize() const { return mMaxSize; }
  void SetMaxSize(long maxSize) { mMaxSize = maxSize; }
  // Sets the number of backups and starts the search for the next backup index afresh.
  void SetBackupCount(unsigned int backups);
  const CString& GetName() const { return mName; }

  // The name for the next backup: "<name>.bak" for counts 0 and 1; else "<name>.<i>.bak", with i
  // first the lowest index that has no file (0 when all exist), then counting on round-robin.
  CString NextBackupName();

  // "[2011-05-31 14:02:07.093+02:00]": local time of the given instant and its offset from UTC,
  // in the zone in force (the setting read afresh).
  static CString FormatTimeStamp(long long seconds, int milliseconds);

 private:
  // Appends the stamp of now to `out`. The zone is the one in force at this record: a change of
  // TZ is seen at once, and the setting is read again for each new millisecond, so a new
  // /etc/localtime is seen by the next stamp that shows a later time. Reading it for every
  // record would cost more than the record; records within one millisecond share the stamp.
  void AppendStampNow(std::string& out);
  // Opens the file for appending, mends a torn tail when no other process has the file open,
  // and learns its size. False if it cannot be opened.
  bool OpenHandle();
  void CutTornTail();
  // The position just after the last separator in the file of `size` bytes, 0 if it has none,
  // -1 if it cannot be told (a read failed, or none in the last 16 MiB of a larger file).
  long long AfterLastSeparator(long long size) const;
  // Writes `record` in one piece and counts it; false if it was not written.
  bool Append(const std::string& record);
  // Moves the file aside when it is larger than the limit and starts a new one.
  void RotateIfTooLarge();
  void CloseHandle();

  long mMaxSize;
  unsigned int mBackupCount;
  int mNextBackup;
  CString mName;
  std::FILE* mFile;
  // The size of the file, counted as it is written: it is the file's only writer, except for a
  // log of another process on the same file, which the Windows log never had to expect.
  long long mSize;
  std::string mRecord;  // the record being written, kept to spare an allocation each time
  // The last stamp, the millisecond it shows and the zone setting it was made under.
  char mStamp[kStampSize];
  std::size_t mStampLength;
  long long mStampTick;
  bool mStampTzSet;
  std::string mStampTz;
};

#endif  // ZENUTL_DIAGNOSTICS_FILE_STREAM_H_
