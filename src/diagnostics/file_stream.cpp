#include "diagnostics/file_stream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/log_file_io.h"
#include "platform/time_zone.h"
#include "zenutl/time_functions.h"

namespace platform = zenutl::platform;

const char* const FileStream::kSeparator = "\n------------------------------\n";

namespace {

const std::size_t kSeparatorLength = 32;
const char kCopiedNote[] = "Logfile was copied to ";
// How far back from the end the last separator is looked for when a file is opened.
const long long kTornTailSearchLimit = 16 * 1024 * 1024;

char* TwoDigits(char* out, int value) {
  *out++ = static_cast<char>('0' + value / 10 % 10);
  *out++ = static_cast<char>('0' + value % 10);
  return out;
}

// "[%d-%02d-%02d %02d:%02d:%02d.%03d%c%02d:%02d]", written digit by digit for the years that
// have four: this runs for every record.
std::size_t FormatStamp(long long seconds, int milliseconds, char* out) {
  tm local = {};
  long long offsetMinutes = 0;
  if (platform::LocalTimeInZoneInForce(seconds, &local)) {
    offsetMinutes = local.tm_gmtoff / 60;
  } else if (zngmtime_r(&seconds, &local) == nullptr) {
    local = tm{};
  }
  const long long absolute = offsetMinutes < 0 ? -offsetMinutes : offsetMinutes;
  const int year = 1900 + local.tm_year;
  const int hours = static_cast<int>(absolute / 60);
  if (year < 1000 || year > 9999 || hours > 99 || milliseconds < 0 || milliseconds > 999) {
    return static_cast<std::size_t>(std::snprintf(
        out, FileStream::kStampSize, "[%d-%02d-%02d %02d:%02d:%02d.%03d%c%02d:%02d]", year,
        1 + local.tm_mon, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, milliseconds,
        offsetMinutes < 0 ? '-' : '+', hours, static_cast<int>(absolute % 60)));
  }
  char* p = out;
  *p++ = '[';
  p = TwoDigits(TwoDigits(p, year / 100), year % 100);
  *p++ = '-';
  p = TwoDigits(p, 1 + local.tm_mon);
  *p++ = '-';
  p = TwoDigits(p, local.tm_mday);
  *p++ = ' ';
  p = TwoDigits(p, local.tm_hour);
  *p++ = ':';
  p = TwoDigits(p, local.tm_min);
  *p++ = ':';
  p = TwoDigits(p, local.tm_sec);
  *p++ = '.';
  *p++ = static_cast<char>('0' + milliseconds / 100);
  p = TwoDigits(p, milliseconds % 100);
  *p++ = offsetMinutes < 0 ? '-' : '+';
  p = TwoDigits(p, hours);
  *p++ = ':';
  p = TwoDigits(p, static_cast<int>(absolute % 60));
  *p++ = ']';
  *p = '\0';
  return static_cast<std::size_t>(p - out);
}

bool StartsWith(const std::string& text, const char* prefix) {
  return text.compare(0, std::strlen(prefix), prefix) == 0;
}
// Whether `text` is the beginning of `whole`, or all of it.
bool IsStartOf(const std::string& text, const char* whole) {
  return text.size() <= std::strlen(whole) && text.compare(0, text.size(), whole, text.size()) == 0;
}

}  // namespace

FileStream::FileStream()
    : mMaxSize(0x100000),
      mBackupCount(0),
      mNextBackup(-1),
      mName(),
      mFile(nullptr),
      mSize(0),
      mRecord(),
      mStamp(),
      mStampLength(0),
      mStampTick(-1),
      mStampTzSet(false),
      mStampTz() {}

FileStream::~FileStream() {
  Close();
}

bool FileStream::Open(const char* fileName) {
  if (fileName == nullptr || *fileName == '\0') return false;
  mName = fileName;
  if (!OpenHandle()) return false;
  mRecord.assign(kSeparator);
  AppendStampNow(mRecord);
  mRecord.append("\nLogfile opened").append(kSeparator);
  Append(mRecord);
  return true;
}

void FileStream::Close() {
  if (mFile == nullptr) return;
  mRecord.clear();
  AppendStampNow(mRecord);
  mRecord.append("\nLogfile closed").append(kSeparator);
  Append(mRecord);
  CloseHandle();
}

bool FileStream::OpenHandle() {
  mFile = platform::OpenLogFile(mName);
  if (mFile == nullptr) return false;
  if (platform::TryLockAlone(mFile)) CutTornTail();
  platform::LockShared(mFile);
  mSize = std::max(platform::OpenFileSize(mFile), 0LL);
  return true;
}

long long FileStream::AfterLastSeparator(long long size) const {
  std::string block;
  for (long long end = size; end > 0 && size - end < kTornTailSearchLimit;) {
    const long long begin = std::max(0LL, end - 65536);
    // The block, and the start of the one after it, for a separator that lies across the two.
    const std::string next = block.substr(0, std::min(block.size(), kSeparatorLength - 1));
    block.assign(static_cast<std::size_t>(end - begin), '\0');
    if (platform::ReadAt(mFile, begin, &block[0], block.size()) !=
        static_cast<long long>(block.size())) {
      return -1;
    }
    block += next;
    const std::size_t found = block.rfind(kSeparator);
    if (found != std::string::npos) return begin + static_cast<long long>(found + kSeparatorLength);
    end = begin;
  }
  return size <= kTornTailSearchLimit ? 0 : -1;
}

// Every record ends with the separator, so what follows the last one in the file is part of a
// record whose writer died. It is cut off when it begins as a record of this log does: a time
// stamp after a separator, the separator that starts an opening record, or the note at the
// head of a rotated file. Anything else there is not this log's and stays.
void FileStream::CutTornTail() {
  const long long size = platform::OpenFileSize(mFile);
  const long long tailStart = size > 0 ? AfterLastSeparator(size) : -1;
  if (tailStart < 0 || tailStart == size) return;
  std::string head(static_cast<std::size_t>(std::min<long long>(size - tailStart, 32)), '\0');
  if (platform::ReadAt(mFile, tailStart, &head[0], head.size()) !=
      static_cast<long long>(head.size())) {
    return;
  }
  const bool afterSeparator = tailStart > 0;
  const bool torn =
      IsStartOf(head, kSeparator) || (afterSeparator && head[0] == '[') ||
      (!afterSeparator && (IsStartOf(head, kCopiedNote) || StartsWith(head, kCopiedNote)));
  if (torn) platform::TruncateOpenFile(mFile, tailStart);
}

void FileStream::CloseHandle() {
  if (mFile == nullptr) return;
  std::fclose(mFile);
  mFile = nullptr;
}

bool FileStream::Append(const std::string& record) {
  if (mFile == nullptr || !platform::AppendRecord(mFile, record.data(), record.size())) {
    return false;
  }
  mSize += static_cast<long long>(record.size());
  return true;
}

bool FileStream::WriteRaw(const CString& text) {
  return Append(text.str());
}

void FileStream::WriteMessage(const CString& text) {
  if (mFile == nullptr) return;
  mRecord.assign(text.str()).append(kSeparator);
  Append(mRecord);
  RotateIfTooLarge();
}

void FileStream::WriteStampedMessage(const char* body, std::size_t length) {
  if (mFile == nullptr) return;
  mRecord.clear();
  AppendStampNow(mRecord);
  mRecord.append(body, length).append(kSeparator);
  Append(mRecord);
  RotateIfTooLarge();
}

void FileStream::RotateIfTooLarge() {
  if (mSize <= static_cast<long long>(mMaxSize)) return;
  CloseHandle();
  const CString backup = NextBackupName();
  // In one step: removing the oldest backup first would leave a moment without it. The result
  // does not matter: if the file could not be moved, the new records go on in it.
  platform::MoveLogAside(mName, backup);
  if (OpenHandle()) WriteRaw(CString(kCopiedNote) + backup + kSeparator);
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
  OpenHandle();
  return result;
}

CString FileStream::FormatTimeStamp(long long seconds, int milliseconds) {
  char stamp[kStampSize];
  FormatStamp(seconds, milliseconds, stamp);
  return CString(stamp);
}

void FileStream::AppendStampNow(std::string& out) {
  long long seconds = 0;
  int milliseconds = 0;
  platform::CurrentTime(&seconds, &milliseconds);
  const long long tick = seconds * 1000 + milliseconds;
  const char* tz = platform::ZoneSettingName();
  const bool sameZone = mStampTzSet == (tz != nullptr) && (tz == nullptr || mStampTz == tz);
  if (tick != mStampTick || !sameZone) {
    mStampLength = FormatStamp(seconds, milliseconds, mStamp);
    mStampTick = tick;
    mStampTzSet = tz != nullptr;
    mStampTz = tz != nullptr ? tz : "";
  }
  out.append(mStamp, mStampLength);
}
