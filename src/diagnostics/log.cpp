#include "zenutl/log.h"

#include <strings.h>

#include <cstring>
#include <string>

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

#include "diagnostics/file_stream.h"

namespace {

const char* const kImportanceTexts[Log::NumImportanceLevels] = {"Debug", "Information", "Warning",
                                                                "Error", "Critical"};

// Serialises CreateInstance against itself, so that two threads racing to create the log end
// with one log and one false.
boost::mutex& CreationMutex() {
  static boost::mutex mutex;
  return mutex;
}

typedef boost::lock_guard<boost::mutex> Guard;

// What follows the time stamp in a message record: " [<level>] [<class>::<function>()]\n<text>",
// the location shortened to "[<class>]" or "[<function>()]" or left out as the names are
// missing. Put together piece by piece, on the stack when it is short: a printf format or an
// allocation would cost more than the rest of the record.
class MessageBody {
 public:
  MessageBody(const char* className, const char* functionName, const char* text,
              Log::Importance importance) {
    Append(" [");
    Append(Log::ImportanceToString(importance));
    Append("]");
    if (className != nullptr || functionName != nullptr) {
      Append(" [");
      if (className != nullptr) Append(className);
      if (className != nullptr && functionName != nullptr) Append("::");
      if (functionName != nullptr) {
        Append(functionName);
        Append("()");
      }
      Append("]");
    }
    Append("\n");
    if (text != nullptr) Append(text);
  }
  const char* data() const { return mLong.empty() ? mShort : mLong.data(); }
  std::size_t size() const { return mLong.empty() ? mShortLength : mLong.size(); }

 private:
  void Append(const char* piece) {
    const std::size_t length = std::strlen(piece);
    if (mLong.empty() && mShortLength + length <= sizeof(mShort)) {
      std::memcpy(mShort + mShortLength, piece, length);
      mShortLength += length;
      return;
    }
    if (mLong.empty()) mLong.assign(mShort, mShortLength);
    mLong.append(piece, length);
  }

  char mShort[512];
  std::size_t mShortLength = 0;
  std::string mLong;
};

}  // namespace

std::atomic<Log*> Log::spInstance(nullptr);

Log::Log() : mLogLevel(Critical), mFile(), mLock(new boost::mutex) {}

// Unreachable from the public interface: the log lives as long as the process.
Log::~Log() {
  if (mFile) mFile->Close();
}

// The short form is the long one with the stream's defaults.
bool Log::CreateInstance(const char* fileName) {
  return CreateInstance(fileName, Critical, 0x100000, 0);
}

bool Log::CreateInstance(const char* fileName, Importance level, long maxSize,
                         unsigned int backups) {
  Guard creating(CreationMutex());
  if (spInstance.load() != nullptr) return false;
  boost::shared_ptr<FileStream> file(new FileStream);
  if (!file->Open(fileName)) return false;
  file->SetMaxSize(maxSize);
  file->SetBackupCount(backups);
  Log* log = new Log;
  log->mFile = file;
  spInstance.store(log);
  Guard writing(*log->mLock);
  log->mLogLevel = level;
  CString text;
  text.Format("Log level set to %s.", ImportanceToString(level));
  log->LogMessage("Log", "CreateInstance", text, Information);
  return true;
}

bool Log::IsValid() {
  return spInstance.load() != nullptr;
}

bool Log::CheckLogLevel(Importance importance) {
  const Log* log = spInstance.load();
  return log != nullptr && importance >= log->mLogLevel.load(std::memory_order_relaxed);
}

void Log::WriteMessage(const char* className, const char* functionName, const char* text,
                       Importance importance, bool force) {
  Log* log = spInstance.load();
  if (log == nullptr) return;
  // A message below the level goes no further, without the lock; one that passes is looked at
  // again under the lock, in case the level changes meanwhile.
  if (!force && importance < log->mLogLevel.load(std::memory_order_relaxed)) return;
  // The text is put together before the lock is taken, so that other threads wait only for the
  // stamp and the write.
  const MessageBody body(className, functionName, text, importance);
  Guard writing(*log->mLock);
  if (force || importance >= log->mLogLevel)
    log->mFile->WriteStampedMessage(body.data(), body.size());
}

bool Log::SetLogLevel(Importance level) {
  Log* log = spInstance.load();
  if (log == nullptr) return false;
  Guard writing(*log->mLock);
  if (log->mLogLevel != level) {
    log->mLogLevel = level;
    CString text;
    text.Format("Log level set to %s.", ImportanceToString(level));
    log->LogMessage("Log", "SetLogLevel", text, Information);
  }
  return true;
}

bool Log::SetMaxFileSize(long maxSize) {
  Log* log = spInstance.load();
  if (log == nullptr) return false;
  Guard writing(*log->mLock);
  if (log->mFile->GetMaxSize() != maxSize) {
    log->mFile->SetMaxSize(maxSize);
    CString text;
    text.Format("Max file size set to %ld bytes.", maxSize);
    log->LogMessage("Log", "SetMaxFileSize", text, Information);
  }
  return true;
}

bool Log::GetBuffer(char* buffer, unsigned int size) {
  Log* log = spInstance.load();
  if (log == nullptr) return false;
  Guard reading(*log->mLock);
  return log->mFile->GetBuffer(buffer, size);
}

void Log::LogMessage(const char* className, const char* functionName, const char* text,
                     Importance importance) {
  const MessageBody body(className, functionName, text, importance);
  mFile->WriteStampedMessage(body.data(), body.size());
}

Log::Importance Log::IndexToImportance(unsigned int index) {
  return index < NumImportanceLevels ? static_cast<Importance>(index) : Critical;
}

unsigned int Log::ImportanceToIndex(Importance importance) {
  const int value = static_cast<int>(importance);
  return value >= 0 && value < static_cast<int>(NumImportanceLevels)
             ? static_cast<unsigned int>(value)
             : NumImportanceLevels - 1;
}

Log::Importance Log::StringToImportance(const char* text) {
  if (text == nullptr) return Critical;
  for (unsigned int index = 0; index < NumImportanceLevels; ++index) {
    if (::strcasecmp(text, kImportanceTexts[index]) == 0) return IndexToImportance(index);
  }
  return Critical;
}

const char* Log::ImportanceToString(Importance importance) {
  return kImportanceTexts[ImportanceToIndex(importance)];
}
