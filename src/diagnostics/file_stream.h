// FileStream: the file behind the process log, with its record layout and its rotation.
//
// The log (zenutl/log.h) owns one of these and serialises every call to it; this class has no
// lock of its own. It writes whole records, each flushed at once, and after every message moves
// the file aside when it has grown past the size limit. Failures are never reported: a record
// that cannot be written is dropped whole, and once the file cannot be reopened after a
// rotation the stream stays closed and drops everything.
#ifndef ZENUTL_DIAGNOSTICS_FILE_STREAM_H_
#define ZENUTL_DIAGNOSTICS_FILE_STREAM_H_

#include <cstdio>

#include "zenutl/cstring.h"

class FileStream {
 public:
  // The 32 characters that end every record.
  static const char* const kSeparator;

  FileStream();
  // Writes the closing record if the file is open.
  ~FileStream();
  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;

  // Opens `fileName` for appending and writes the opening record. False for an empty name or a
  // file that cannot be opened.
  bool Open(const char* fileName);
  // Writes the closing record and closes the file; nothing when closed.
  void Close();
  bool IsOpen() const { return mFile != nullptr; }

  // Writes `text` and the separator as one record, then rotates if the file is too large.
  void WriteMessage(const CString& text);
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

  // "[2011-05-31 14:02:07.093+02:00]": local time of the given instant and its offset from UTC.
  static CString FormatTimeStamp(long long seconds, int milliseconds);
  // The stamp of now. The local time is worked out once for each second: a busy log writes many
  // records a second, and the time zone lookup costs more than writing the record.
  CString TimeStamp();

 private:
  // Moves the file aside when it is larger than the limit and starts a new one.
  void RotateIfTooLarge();
  void CloseHandle();

  long mMaxSize;
  unsigned int mBackupCount;
  int mNextBackup;
  CString mName;
  std::FILE* mFile;
  long long mStampSecond;
  CString mStampOfSecond;  // FormatTimeStamp of mStampSecond with 0 milliseconds
};

#endif  // ZENUTL_DIAGNOSTICS_FILE_STREAM_H_
