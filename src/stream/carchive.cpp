#include "zenutl/carchive.h"

#include <algorithm>
#include <cstring>

namespace {

const int kSmallestBuffer = 128;

}  // namespace

CArchive::CArchive(CFile* file, UINT mode, int bufferSize)
    : mFile(file),
      mMode(mode),
      mBuffer(static_cast<std::size_t>(std::max(bufferSize, kSmallestBuffer))),
      mNext(0),
      mLimit(0) {}

CArchive::~CArchive() {
  if (mFile == nullptr) return;
  try {
    Close();
  } catch (const CException&) {
    // A destructor cannot report; Close first to see the failure.
  }
}

CFile& CArchive::OpenFile(int misuse) const {
  if (mFile == nullptr) throw CArchiveException(CArchiveException::genericException);
  if (misuse != CArchiveException::none) throw CArchiveException(misuse, mFile->GetFilePath());
  return *mFile;
}

UINT CArchive::Read(void* buffer, UINT count) {
  CFile& file = OpenFile(IsLoading() ? CArchiveException::none : CArchiveException::writeOnly);
  char* out = static_cast<char*>(buffer);
  std::size_t done = 0;
  while (done < count) {
    if (mNext == mLimit) {
      const std::size_t wanted = count - done;
      if (wanted >= mBuffer.size()) {
        // A large read goes straight into the caller's memory.
        return static_cast<UINT>(done + file.Read(out + done, static_cast<UINT>(wanted)));
      }
      mNext = mLimit = 0;  // nothing stale stays if the read throws
      mLimit = file.Read(mBuffer.data(), static_cast<UINT>(mBuffer.size()));
      if (mLimit == 0) break;
    }
    const std::size_t step = std::min<std::size_t>(count - done, mLimit - mNext);
    std::memcpy(out + done, mBuffer.data() + mNext, step);
    mNext += step;
    done += step;
  }
  return static_cast<UINT>(done);
}

void CArchive::Write(const void* buffer, UINT count) {
  CFile& file = OpenFile(IsStoring() ? CArchiveException::none : CArchiveException::readOnly);
  if (count > mBuffer.size() - mNext) {
    Flush();
    if (count >= mBuffer.size()) return file.Write(buffer, count);
  }
  std::memcpy(mBuffer.data() + mNext, buffer, count);
  mNext += count;
}

void CArchive::Flush() {
  CFile& file = OpenFile(CArchiveException::none);
  if (IsLoading()) {
    if (mNext != mLimit) file.Seek(-static_cast<LONGLONG>(mLimit - mNext), CFile::current);
    mNext = mLimit = 0;
  } else if (mNext != 0) {
    const std::size_t pending = mNext;
    mNext = 0;  // a failed write is not tried again
    file.Write(mBuffer.data(), static_cast<UINT>(pending));
  }
}

void CArchive::Close() {
  Flush();
  mFile = nullptr;
}

void CArchive::Abort() {
  mFile = nullptr;
  mNext = mLimit = 0;
}
