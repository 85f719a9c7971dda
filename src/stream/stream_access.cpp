#include "stream/stream_access.h"

#include <algorithm>

namespace zenutl {
namespace stream {
namespace {

const std::size_t kLargestArchiveStep = std::size_t(1) << 30;

const char kTellFailed[] = "Tell failed.";
const char kSeekFailed[] = "Seek failed.";

CFile& FileOf(CArchive& archive, const char* failure) {
  archive.Flush();
  CFile* file = archive.GetFile();
  if (file == nullptr) throw StreamException(failure);
  return *file;
}

}  // namespace

std::size_t ReadFromArchive(CArchive& archive, void* data, std::size_t size) {
  char* next = static_cast<char*>(data);
  std::size_t done = 0;
  while (done < size) {
    const UINT step = static_cast<UINT>(std::min(size - done, kLargestArchiveStep));
    const UINT got = archive.Read(next + done, step);
    done += got;
    if (got < step) break;
  }
  return done;
}

void WriteToArchive(CArchive& archive, const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  for (std::size_t done = 0; done < size;) {
    const UINT step = static_cast<UINT>(std::min(size - done, kLargestArchiveStep));
    archive.Write(next + done, step);
    done += step;
  }
}

long long TellArchive(CArchive& archive) {
  try {
    return static_cast<long long>(FileOf(archive, kTellFailed).GetPosition());
  } catch (const CException&) {
    throw StreamException(kTellFailed);
  }
}

void SeekArchive(CArchive& archive, long long position) {
  try {
    FileOf(archive, kSeekFailed).Seek(position, CFile::begin);
  } catch (const CException&) {
    throw StreamException(kSeekFailed);
  }
}

}  // namespace stream
}  // namespace zenutl
