// What StreamReader and StreamWriter share: the rule that turns a stray library exception into
// the operation's own failure, and the archive side of moving bytes and positions.
#ifndef ZENUTL_SRC_STREAM_STREAM_ACCESS_H_
#define ZENUTL_SRC_STREAM_STREAM_ACCESS_H_

#include <cstddef>

#include "zenutl/carchive.h"
#include "zenutl/exception.h"

namespace zenutl {
namespace stream {

// Runs `body`; a StreamException passes as it is, any other Exception becomes
// StreamException(`failure`). Exceptions outside the family (those of the archive layer,
// std::bad_alloc) pass untouched.
template <typename Body>
void Guarded(const char* failure, Body body) {
  try {
    body();
  } catch (const StreamException&) {
    throw;
  } catch (const Exception&) {
    throw StreamException(failure);
  }
}

// The archive's Read and Write take a 32-bit count; these cut larger transfers into steps.
// ReadFromArchive answers how many bytes came, fewer only at the end of the file.
std::size_t ReadFromArchive(CArchive& archive, void* data, std::size_t size);
void WriteToArchive(CArchive& archive, const void* data, std::size_t size);

// Tell and Seek on an archive: flush it, then ask or move its file. Any failure, including a
// CException of the archive layer, throws StreamException "Tell failed." or "Seek failed.".
long long TellArchive(CArchive& archive);
void SeekArchive(CArchive& archive, long long position);

}  // namespace stream
}  // namespace zenutl

#endif  // ZENUTL_SRC_STREAM_STREAM_ACCESS_H_
