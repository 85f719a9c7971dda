// Log: the process-wide diagnostic log file.
//
// One text file for the whole process, created on request by the application with
// `CreateInstance` and kept open until the process ends; there is deliberately no way to close
// it. Every message is filtered by importance, stamped with the local time to the millisecond
// and its offset from UTC ("[2011-05-31 14:02:07.093+02:00]") in the zone in force at that
// record, and flushed to disk at once. When the file grows past a size limit it is moved aside
// to a backup ("name.bak", or "name.0.bak" ... "name.<n-1>.bak" for n > 1 backups, reused
// round-robin) by one rename over the oldest, and a new file starts.
// For talking to the user rather than to the file, see user_comm.h.
//
// All operations are static and may be called from any thread at any time: before
// `CreateInstance` (or after it failed) they do nothing and answer false. Nothing here throws.
// A log that cannot write (disk full, folder removed) drops messages and keeps the process
// running; a record is then either written whole or not at all, and the part of a record that a
// process killed during its write left behind is cut off when a log next opens the file. Once
// the file cannot be reopened after a rotation, every later message is dropped.
#ifndef ZENUTL_LOG_H_
#define ZENUTL_LOG_H_

#include <atomic>

#include <boost/shared_ptr.hpp>

namespace boost {
class mutex;
}
class FileStream;

class Log {
 public:
  enum Importance : int { Debug = 0, Information = 1, Warning = 2, Error = 3, Critical = 4 };
  static constexpr Importance MinImportance = Debug;
  static constexpr Importance MaxImportance = Critical;
  static constexpr unsigned int NumImportanceLevels = 5;

  // Creates the log, appending to `fileName` if it exists, with level Critical, a limit of
  // 1,048,576 bytes and one backup. False for an empty name, a file that cannot be opened, or
  // when a log already exists (which then stays exactly as it is).
  static bool CreateInstance(const char* fileName);
  // The same with the given level, size limit in bytes and number of backups (0 keeps one
  // backup, like 1). Either form writes "Log level set to <level>." whatever the level.
  static bool CreateInstance(const char* fileName, Importance level, long maxSize,
                             unsigned int backups);

  // Whether a log exists.
  static bool IsValid();
  // Whether a log exists and would write a message of this importance. Cheap, takes no lock.
  static bool CheckLogLevel(Importance importance);

  // Writes one record when `importance` is at or above the level, or `force` is set. Either
  // name may be null; the record's header shows "[Class::Function()]", "[Class]",
  // "[Function()]" or nothing accordingly.
  static void WriteMessage(const char* className, const char* functionName, const char* text,
                           Importance importance, bool force);

  // Change the level or the size limit, logging the change at Information. An unchanged value
  // writes nothing. False only when there is no log.
  static bool SetLogLevel(Importance level);
  static bool SetMaxFileSize(long maxSize);

  // Copies the last `size - 1` bytes of the log file (all of it when shorter) into `buffer`,
  // zero-terminated. False when there is no log, the log lost its file, or the file cannot be
  // read; also, touching nothing, for a null buffer or a size of 0.
  static bool GetBuffer(char* buffer, unsigned int size);

  // Index 0..4 <=> Debug..Critical; "Debug", "Information", "Warning", "Error", "Critical".
  // Out-of-range input maps to Critical (index 4), never fails. StringToImportance ignores case.
  static Importance IndexToImportance(unsigned int index);
  static unsigned int ImportanceToIndex(Importance importance);
  static Importance StringToImportance(const char* text);
  static const char* ImportanceToString(Importance importance);

 private:
  Log();
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  // The common writer; the caller holds the lock and has decided to write.
  void LogMessage(const char* className, const char* functionName, const char* text,
                  Importance importance);

  // Set once, never cleared; read without a lock by every operation.
  static std::atomic<Log*> spInstance;

  // Written under the lock, read without it by CheckLogLevel.
  std::atomic<Importance> mLogLevel;
  boost::shared_ptr<FileStream> mFile;
  boost::shared_ptr<boost::mutex> mLock;
};

#endif  // ZENUTL_LOG_H_
