#include "diagnostics/file_stream.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/log_file_io.h"
#include "zenutl/time_functions.h"

namespace platform = zenutl::platform;

const char* const FileStream::kSeparator = "\n------------------------------\n";

FileStream::FileStream()
    : mMaxSize(0x100000),
      mBackupCount(0),
      mNextBackup(-1),
      mName(),
      mFile(nullptr),
      mStampSecond(0),
      mStampOfSecond() {}

FileStream::~FileStream() {
  Close();
}

bool FileStream::Open(const char* fileName) {
  if (fileName == nullptr || *fileName == '\0') return false;
  mName = fileName;
  mFile = platform::OpenFile(fileName, "at");
  if (mFile == nullptr) return false;
  WriteRaw(CString(kSeparator) + TimeStamp() + "\nLogfile opened" + kSeparator);
  return true;
}

void FileStream::Close() {
  if (mFile == nullptr) return;
  WriteRaw(TimeStamp() + "\nLogfile closed" + kSeparator);
  CloseHandle();
}

void FileStream::CloseHandle() {
  if (mFile == nullptr) return;
  std::fclose(mFile);
  mFile = nullptr;
}

bool FileStream::WriteRaw(const CString& text) {
  if (mFile == nullptr) return false;
  return platform::AppendRecord(mFile, text.GetString(),
                                static_cast<std::size_t>(text.GetLength()));
}

void FileStream::WriteMessage(const CString& text) {
  if (mFile == nullptr) return;
  WriteRaw(text + kSeparator);
  RotateIfTooLarge();
}

void FileStream::RotateIfTooLarge() {
  const long long size = platform::WrittenFileSize(mFile);
  if (size <= static_cast<long long>(mMaxSize)) return;
  CloseHandle();
  const CString backup = NextBackupName();
  // Neither result matters: if the file could not be moved, the new records simply go on in it.
  platform::RemoveFile(backup);
  platform::RenameFile(mName, backup);
  mFile = platform::OpenFile(mName, "at");
  if (mFile != nullptr) WriteRaw(CString("Logfile was copied to ") + backup + kSeparator);
}

void FileStream::SetBackupCount(unsigned int backups) {
  mBackupCount = backups;
  mNextBackup = -1;
}

CString FileStream::NextBackupName() {
  CString backup;
  if (mBackupCount <= 1) {
    backup = mName + ".bak";
    return backup;
  }
  if (mNextBackup < 0) {
    // Every index that has no file replaces the candidate on the way down, so the search ends
    // on the lowest free index; with all present it stays at 0, the start of the round.
    mNextBackup = 0;
    for (unsigned int index = mBackupCount; index-- > 0;) {
      CString candidate;
      candidate.Format("%s.%u.bak", mName.GetString(), index);
      if (platform::FileModificationTime(candidate) <= 0) mNextBackup = static_cast<int>(index);
    }
  }
  backup.Format("%s.%u.bak", mName.GetString(), static_cast<unsigned int>(mNextBackup));
  mNextBackup = static_cast<int>((static_cast<unsigned int>(mNextBackup) + 1) % mBackupCount);
  return backup;
}

bool FileStream::GetBuffer(char* buffer, unsigned int size) {
  if (mFile == nullptr || buffer == nullptr || size == 0) return false;
  CloseHandle();
  bool result = false;
  if (std::FILE* reader = platform::OpenFile(mName, "rb")) {
    const long long fileSize = platform::OpenFileSize(reader);
    if (static_cast<long long>(size) <= fileSize) {
      std::fseek(reader, 1 - static_cast<long>(size), SEEK_END);
    }
    std::memset(buffer, 0, size);
    const std::size_t got = std::fread(buffer, 1, size - 1, reader);
    buffer[got] = '\0';
    std::fclose(reader);
    result = true;
  }
  mFile = platform::OpenFile(mName, "at");
  return result;
}

CString FileStream::FormatTimeStamp(long long seconds, int milliseconds) {
  tm local = {};
  long long offsetMinutes = 0;
  if (znlocaltime_r(&seconds, &local) != nullptr) {
    tm copy = local;
    offsetMinutes = (znmkgmtime(&copy) - seconds) / 60;
  }
  const long long absolute = offsetMinutes < 0 ? -offsetMinutes : offsetMinutes;
  char text[64];
  std::snprintf(text, sizeof(text), "[%d-%02d-%02d %02d:%02d:%02d.%03d%c%02d:%02d]",
                1900 + local.tm_year, 1 + local.tm_mon, local.tm_mday, local.tm_hour, local.tm_min,
                local.tm_sec, milliseconds, offsetMinutes < 0 ? '-' : '+',
                static_cast<int>(absolute / 60), static_cast<int>(absolute % 60));
  return CString(text);
}

CString FileStream::TimeStamp() {
  long long seconds = 0;
  int milliseconds = 0;
  platform::CurrentTime(&seconds, &milliseconds);
  if (mStampOfSecond.IsEmpty() || seconds != mStampSecond) {
    mStampOfSecond = FormatTimeStamp(seconds, 0);
    mStampSecond = seconds;
  }
  // The milliseconds are the three digits after the first '.'; the date holds none.
  CString stamp = mStampOfSecond;
  const int at = stamp.Find('.') + 1;
  char digits[4];
  std::snprintf(digits, sizeof(digits), "%03d", milliseconds);
  for (int i = 0; i < 3; ++i) stamp.SetAt(at + i, digits[i]);
  return stamp;
}
